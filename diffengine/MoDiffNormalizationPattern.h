#ifndef MO_DIFF_NORMALIZATION_PATTERN_H
#define MO_DIFF_NORMALIZATION_PATTERN_H

#include "KLTExport.h"

#include <cstddef>
#include <memory>

class MoDiffDeletions;
class MoDiffScanningMatcher;

/// A regular expression whose matches are deleted from a text.
///
/// The syntax and the meaning are those of ICU's regular expressions without flags: case-sensitive, "." stops at line
/// ends unless the expression starts with "(?s)". One object must not be used by two threads at the same time;
/// different objects are independent.
class KLT_EXPORT MoDiffNormalizationPattern {
public:
    /// Compiles an expression (NUL-terminated, not kept). Raises KLTAssertError when it is not well-formed.
    explicit MoDiffNormalizationPattern(char const* regex);
    virtual ~MoDiffNormalizationPattern();
    MoDiffNormalizationPattern(MoDiffNormalizationPattern const&) = delete;
    MoDiffNormalizationPattern& operator=(MoDiffNormalizationPattern const&) = delete;

    /// Deletes every match from a NUL-terminated UTF-8 text, in place. Bytes that are not valid UTF-8 count as one
    /// character each and survive like all others. Behind the shortened text, zeros follow up to its old end.
    ///
    /// Raises KLTAssertError, the text being unchanged, when the buffer is null or when matching exhausts ICU's
    /// backtracking stack or its time limit.
    void normalizeText(char* buffer) const;

private:
    friend class MoDiffCleansing;
    class Matcher;

    /// Null for an expression that needs whole texts.
    MoDiffScanningMatcher* scanningMatcher() const;
    /// Deletes every match from a text and returns how many bytes they had.
    /// @param deletions is told which ones, unless it is null
    std::size_t deleteMatches(char* text, MoDiffDeletions* deletions) const;

    std::unique_ptr<Matcher> m_matcher;
};

#endif
