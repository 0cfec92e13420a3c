#ifndef MO_DIFF_AUTOMATON_H
#define MO_DIFF_AUTOMATON_H

#include "MoDiffCandidateScanner.h"
#include "MoDiffProgram.h"

#include <array>
#include <bitset>
#include <cstdint>
#include <vector>

/// Follows all ways through a program at once, in one table look-up per character. The table is filled in as texts
/// are read; its memory is taken when the automaton is built, so that running allocates nothing. Time is linear in
/// the text read. One object must not be used by two threads at the same time.
class MoDiffAutomaton {
public:
    using Text = unsigned char const*;

    struct Outcome {
        Text matchEnd;  ///< null when there is no match
        Text stopped;   ///< how far the text had to be read
        Text lastAlive; ///< where the last character began to be read that all ways ended at; else as stopped
    };

    enum Direction {
        eForward, ///< a match ends where ICU ends it
        eBackward ///< every match counts
    };

    /// @param program must outlive the automaton
    MoDiffAutomaton(MoDiffProgram const& program, Direction direction);

    /// Matches at text, which is known to begin with the program's head, and nowhere else.
    Outcome matchAt(Text text, Text end) {
        text += m_headLength;
        if (m_headRow == kUnknown)
            followHead(text - m_headLength);
        bool const isDecided = text < end && m_table[m_headRow + m_alphabet.classOfByte(*text)] == m_deadArrival;
        return isDecided ? Outcome{m_isHeadMatch ? text : nullptr, text + 1, text} : run(m_headRow, text, end);
    }

    /// Whether all ways that lead on from the head stay open until none does: then a match that failed from one place
    /// fails from every place behind it whose head ends before. To be asked only after a call of matchAt.
    bool isPersistent();

    /// Searches for the leftmost match from text on. Without one, stops early where no match can have begun before.
    /// @param previousIsWord whether text follows a character of words
    Outcome search(Text text, Text end, bool previousIsWord);

    /// Reads backwards from a match's end; returns the leftmost start not before limit that isStart accepts, or null.
    /// @param end where the whole text ends
    template<typename IsStart>
    Text matchBackwards(Text limit, Text matchEnd, Text end, IsStart isStart);

private:
    using Row = std::uint32_t; ///< a state: the index of its first entry in the table

    struct State {
        std::uint32_t firstPlace; ///< its places in the program, most preferred first
        std::uint32_t placeCount;
        bool restarts;       ///< whether a match may still begin anywhere
        bool previousIsWord; ///< what a word boundary at a new start depends on
        bool isMatch;
        bool isLast;         ///< whether what follows doesn't matter
        std::int8_t scanner; ///< its index, or why there is none
    };

    /// What leads from one state to the next is the row, marked when arriving there has to be noticed.
    static Row constexpr kUnknown = Row{1} << 31;
    static Row constexpr kNever = kUnknown + 1;
    static Row constexpr kMatches = Row{1} << 30;
    static Row constexpr kIsLast = Row{1} << 29;
    static Row constexpr kLeaps = Row{1} << 28; ///< there is a scanner for where the state is left
    static Row constexpr kRowMask = kLeaps - 1;
    static bool isNoticed(Row arrival) { return arrival >= kLeaps; } ///< true for kUnknown, too
    static std::size_t constexpr kMostStates = 256;
    /// For few states only there are scanners that find where they are left.
    static std::size_t constexpr kMostScanners = 6;
    static std::int8_t constexpr kNotTried = -1;
    static std::int8_t constexpr kUseless = -2;
    enum class Answer { eUnknown, eNo, eYes };

    void followHead(Text text);
    Outcome run(Row row, Text text, Text end);
    Text leap(Row row, Text text, Text end, Text& leapFrom);
    bool isMostlyKept(Row row);
    void makeScanner(Row row);
    bool deriveExits(Row state, MoDiffCandidateScanner::Bytes& loners);
    bool includesHead(Row row) const;
    Answer derivePersistence();
    Row arrival(Row row) const;
    bool isEventful(Row row) const { return stateOf(row).isMatch || stateOf(row).isLast; }
    Row startRow(bool restarts, bool previousIsWord);
    Row step(Row row, std::uint8_t symbolClass);
    void follow(State const& source, std::uint8_t symbolClass);
    void consume(std::uint16_t const* places, std::size_t count, std::uint8_t symbolClass);
    void addReachable(std::uint16_t index);
    bool mayStartBefore(State const& source, std::uint8_t symbolClass) const;
    Row intern(bool restarts, bool previousIsWord);
    void clearReached();
    void forgetStates();
    State const& stateOf(Row row) const { return m_states[row >> m_shift]; }
    State& stateOf(Row row) { return m_states[row >> m_shift]; }

    MoDiffAlphabet const& m_alphabet;
    MoDiffProgram::Steps const& m_program;
    std::size_t const m_headLength;
    bool const m_prefersEarlierWays;
    bool const m_startsAtWordBoundary;
    std::size_t const m_width; ///< entries in use in a row; a row takes up the next power of two
    unsigned const m_shift;    ///< from a row to its state's index

    std::vector<Row> m_table;
    std::vector<State> m_states;
    std::vector<std::uint16_t> m_places;
    std::array<Row, 4> m_startRows{};
    Row m_headRow = kUnknown; ///< where the expression's head leads to
    bool m_isHeadMatch = false;
    Row m_deadArrival = kNever; ///< at the state without places, as soon as it is made
    Answer m_isPersistent = Answer::eUnknown;
    std::vector<MoDiffCandidateScanner> m_scanners;
    MoDiffProgram::Prefix m_way; ///< room for what a scanner is made of

    std::vector<std::uint16_t> m_startPlaces;
    std::vector<std::uint16_t> m_reached; ///< the places of the state that is being made
    std::vector<bool> m_isReached;        ///< by step of the program
    bool m_isDecided = false;             ///< whether a match has cut off all less preferred ways
};

template<typename IsStart>
MoDiffAutomaton::Text MoDiffAutomaton::matchBackwards(Text limit, Text matchEnd, Text end, IsStart isStart) {
    Text leftmost = nullptr;
    Row row = startRow(false, false);
    Text text = matchEnd;
    while (text > limit) {
        Row const next = m_table[row + m_alphabet.classOfByte(text[-1])];
        if (!isNoticed(next)) {
            row = next;
            --text;
            continue;
        }
        MoDiffAlphabet::Symbol const symbol = m_alphabet.symbolBefore(limit, text, end);
        row = step(row, symbol.symbolClass);
        text -= symbol.length;
        State const& state = stateOf(row);
        if (state.isMatch && isStart(text))
            leftmost = text;
        if (state.isLast)
            break;
    }
    return leftmost;
}

#endif
