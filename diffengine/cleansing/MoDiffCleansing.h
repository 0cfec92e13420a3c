#ifndef MO_DIFF_CLEANSING_H
#define MO_DIFF_CLEANSING_H

#include "MoDiffDeletions.h"
#include "MoDiffNormalizationPattern.h"

#include <cstddef>
#include <initializer_list>
#include <list>
#include <vector>

/// Deletes carriage returns and the matches of a list of patterns from texts, in place. A large text goes through all
/// patterns part by part, so that it comes from memory once and not once a pattern; what is deleted is the same.
class MoDiffCleansing {
public:
    using Patterns = std::list<MoDiffNormalizationPattern const*>;

    /// A text to be cleansed and what is told of it.
    struct Subject {
        explicit Subject(char* buffer) : text(buffer) {}

        char* text;                               ///< NUL-terminated, not owned
        std::size_t length = 0;                   ///< what is left, in bytes
        std::vector<std::size_t> deleted{};       ///< in bytes: the carriage returns, then what each pattern deleted
        bool isRecorded = false;                  ///< whether it is also to be told which bytes
        std::vector<MoDiffDeletions> deletions{}; ///< then these, in the order of the steps
    };

    /// Cleanses the texts. Raises KLTAssertError where a pattern is null or ICU gives up; the patterns before it have
    /// been applied to all texts then, and that one to the texts before the one that it was applied to.
    static void cleanse(std::initializer_list<Subject*> subjects, Patterns const& patterns);

    /// Raises KLTAssertError when the pattern is null.
    static void checkPattern(MoDiffNormalizationPattern const* pattern);

private:
    using Iterator = Patterns::const_iterator;

    static bool needsWholeTexts(MoDiffNormalizationPattern const* pattern);
    static void deleteFromWhole(Subject& subject, MoDiffNormalizationPattern const& pattern);
    struct Stage;
    static void deleteByParts(Subject& subject, bool deletesReturns, Iterator begin, Iterator end);
    static void deleteByParts(Subject& subject, std::vector<Stage>& stages);
    using StageIterator = std::vector<Stage>::iterator;
    static char* deleteKnown(StageIterator begin, StageIterator stagesEnd, char* known, bool isWhole);
    static char* deleteWhole(std::vector<Stage>& stages, char* end);
    static char* deleteListed(StageIterator begin, StageIterator stagesEnd, char* end);
};

#endif
