#ifndef MO_DIFF_SCANNING_MATCHER_H
#define MO_DIFF_SCANNING_MATCHER_H

#include "MoDiffAutomaton.h"
#include "MoDiffCandidateIndex.h"
#include "MoDiffCandidateScanner.h"
#include "MoDiffLiteralMatcher.h"
#include "MoDiffProgram.h"
#include "MoDiffTextProgress.h"

#include <cstddef>
#include <memory>
#include <optional>

/// Deletes an expression's matches from UTF-8 text where it stands, at the speed of scanning, without ICU and without
/// copies: candidates are searched for, and only from there on the text is read character by character. Time is
/// linear in the text's length, but for expressions that read on far behind a match for a longer one. One object must
/// not be used by two threads at the same time.
class MoDiffScanningMatcher {
public:
    /// Takes an expression that has been read; null when it must be left to ICU.
    /// @param stateLimit see MoDiffStateTable
    static std::unique_ptr<MoDiffScanningMatcher> create(MoDiffExpression const& expression,
                                                         std::size_t stateLimit = MoDiffStateTable::kMostStates);

    /// Deletes every match from a text as far as it is known and can be decided about. Allocates nothing and raises
    /// nothing.
    /// @param end     where the known text ends
    /// @param isWhole whether the text ends there, too; then everything is decided
    void deleteMatches(MoDiffTextProgress& progress, char const* end, bool isWhole) {
        deleteMatches(progress, end, isWhole, {});
    }

    /// By what candidates can be listed in an index; null when they must be searched for.
    MoDiffCandidateIndex::Pair const* pair() const { return m_pair ? &*m_pair : nullptr; }

    /// The same for a whole text, of which an index knows the candidates; it is kept true.
    /// @param pair this matcher's number in the index
    void deleteMatches(MoDiffTextProgress& progress, char const* end, MoDiffCandidateIndex& index, std::size_t pair);

private:
    using Text = MoDiffAutomaton::Text;
    struct Match {
        Text start;
        Text end;
    };
    enum Verdict {
        eFailed,
        eMatched,
        eOpen ///< more text has to be known first
    };

    /// A text, or a part of one, how far it has been read and what is known of it.
    struct Reading {
        Text begin;
        Text end;          ///< of the known text
        bool isWhole;      ///< whether the text ends there, too
        bool isBehindWord; ///< whether begin follows a character of words
        Text position;     ///< from here on matches are looked for
        MoDiffCandidateScanner::Cursor cursor;
        Text tried = nullptr;    ///< how far candidates have been read in vain
        Text noneFrom = nullptr; ///< from where on no match can begin; null as long as it hasn't been looked for
    };

    MoDiffScanningMatcher(MoDiffProgram program, std::size_t stateLimit);
    MoDiffScanningMatcher(MoDiffScanningMatcher const&) = delete;
    MoDiffScanningMatcher& operator=(MoDiffScanningMatcher const&) = delete;

    void deleteMatches(MoDiffTextProgress& progress, char const* end, bool isWhole,
                       MoDiffCandidateScanner::Cursor cursor);
    std::optional<Match> find(Reading& reading);
    // Part of the loop over candidates: as calls they cost a twentieth where these stand close together.
    [[gnu::always_inline]] inline Verdict tryHere(Reading& reading, Match& match);
    Verdict search(Reading& reading, Match& match);
    static Verdict judge(Reading const& reading, MoDiffAutomaton::Outcome const& outcome);
    [[gnu::always_inline]] inline Text nextCandidate(Reading& reading) const;
    [[gnu::noinline]] Text endNearby(Reading const& reading); // inline it would cost each candidate
    Text findNoneFrom(Reading const& reading) const;
    Text endOfDecided(Reading const& reading) const;
    static Text endOfWholeCharacters(Text begin, Text end);
    bool previousIsWord(Reading const& reading, Text position) const;
    bool isWordBoundary(Reading const& reading, Text position) const;

    MoDiffProgram const m_program;
    std::optional<MoDiffCandidateScanner> m_scanner;
    std::optional<MoDiffCandidateScanner> m_requiredScanner;
    MoDiffAutomaton m_forward;
    MoDiffAutomaton m_backward;
    std::optional<MoDiffLiteralMatcher> const m_literal;
    std::optional<MoDiffCandidateIndex::Pair> m_pair;
    bool m_expectsFailure = false; ///< whether a candidate is likelier to fail late than to match
};

#endif
