#ifndef MO_DIFF_CLEANSING_H
#define MO_DIFF_CLEANSING_H

#include "MoDiffNormalizationPattern.h"

#include <cstddef>
#include <list>

/// Deletes carriage returns and the matches of a list of patterns from texts, in place. A large text goes through all
/// patterns part by part, so that it comes from memory once and not once a pattern; what is deleted is the same.
class MoDiffCleansing {
public:
    using Patterns = std::list<MoDiffNormalizationPattern const*>;

    /// Cleanses both texts, which are NUL-terminated. Raises KLTAssertError where a pattern is null or ICU gives up;
    /// the patterns before it have been applied to both texts then, or that one to the first text only.
    static void cleanse(char* first, char* second, Patterns const& patterns);

    /// Raises KLTAssertError when the pattern is null.
    static void checkPattern(MoDiffNormalizationPattern const* pattern);

private:
    using Iterator = Patterns::const_iterator;

    static bool needsWholeTexts(MoDiffNormalizationPattern const* pattern);
    static void deleteByParts(char* text, bool deletesReturns, Iterator begin, Iterator end);
};

#endif
