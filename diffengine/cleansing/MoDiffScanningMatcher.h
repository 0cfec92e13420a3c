#ifndef MO_DIFF_SCANNING_MATCHER_H
#define MO_DIFF_SCANNING_MATCHER_H

#include "MoDiffAutomaton.h"
#include "MoDiffCandidateScanner.h"
#include "MoDiffLiteralMatcher.h"
#include "MoDiffProgram.h"
#include "MoDiffTextProgress.h"

#include <cstddef>
#include <memory>
#include <optional>

/// Deletes an expression's matches from UTF-8 text where it stands, at the speed of scanning, without ICU and without
/// copies: candidates are searched for, and only from there on the text is read character by character. Time is
/// linear in the text's length. One object must not be used by two threads at the same time.
class MoDiffScanningMatcher {
public:
    /// Takes an expression that has been read; null when it must be left to ICU.
    static std::unique_ptr<MoDiffScanningMatcher> create(MoDiffExpression const& expression);

    /// Deletes every match from a text as far as it is known and can be decided about. Allocates nothing and raises
    /// nothing.
    /// @param end     where the known text ends
    /// @param isWhole whether the text ends there, too; then everything is decided
    void deleteMatches(MoDiffTextProgress& progress, char const* end, bool isWhole);

private:
    using Text = MoDiffAutomaton::Text;
    struct Match {
        Text start; ///< null when there is none
        Text end;   ///< without a match, where the next search has to begin
    };
    /// A text, or a part of one, and where in it reading is.
    struct Place {
        Text begin;
        Text position;
        Text end;
        bool isBehindWord; ///< whether begin follows a character of words
    };

    /// What is known of the text that is worked on.
    struct Knowledge {
        bool isWhole; ///< whether the text ends where it is known to
        MoDiffCandidateScanner::Cursor cursor = {};
        Text noneFrom = nullptr; ///< from where on no match can begin; null as long as it hasn't been looked for
    };

    explicit MoDiffScanningMatcher(MoDiffProgram program);
    MoDiffScanningMatcher(MoDiffScanningMatcher const&) = delete;
    MoDiffScanningMatcher& operator=(MoDiffScanningMatcher const&) = delete;

    Match find(Place place, Knowledge& known);
    Text nextCandidate(Place const& place, Knowledge& known) const;
    Text findNoneFrom(Place const& place) const;
    Text endOfDecided(Place const& place) const;
    static Text endOfWholeCharacters(Text begin, Text end);
    bool previousIsWord(Place place) const;
    bool isWordBoundary(Place const& place) const;

    MoDiffProgram const m_program;
    std::optional<MoDiffCandidateScanner> m_scanner;
    std::optional<MoDiffCandidateScanner> m_requiredScanner;
    MoDiffAutomaton m_forward;
    MoDiffAutomaton m_backward;
    std::optional<MoDiffLiteralMatcher> const m_literal;
    bool m_expectsFailure = false; ///< whether a candidate is likelier to fail late than to match
};

#endif
