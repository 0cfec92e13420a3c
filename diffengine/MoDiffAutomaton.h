#ifndef MO_DIFF_AUTOMATON_H
#define MO_DIFF_AUTOMATON_H

#include "MoDiffProgram.h"

#include <array>
#include <cstdint>
#include <vector>

/// Follows all ways through a program at once, in one table look-up per character. The table is filled in as texts
/// are read; its memory is taken when the automaton is built, so that running allocates nothing. Time is linear in
/// the text read. One object must not be used by two threads at the same time.
class MoDiffAutomaton {
public:
    using Text = unsigned char const*;

    struct Outcome {
        Text matchEnd; ///< null when there is no match
        Text stopped;  ///< how far the text had to be read
    };

    /// @param alphabet,program must outlive the automaton
    /// @param prefersEarlierWays whether a match ends where ICU ends it, as for reading forwards; otherwise every
    /// match
    ///                           counts, as for reading backwards
    MoDiffAutomaton(MoDiffAlphabet const& alphabet, MoDiffProgram::Steps const& program, bool prefersEarlierWays,
                    bool startsAtWordBoundary);

    /// Matches at text and nowhere else. An outcome that stopped before limit is certain; else reading on might
    /// change it, unless limit is the end.
    /// @param limit where to stop reading
    /// @param end   where the whole text ends
    Outcome matchAt(Text text, Text limit, Text end);

    /// Searches for the leftmost match from text on. Without one, stops early where no match can have begun before.
    /// @param previousIsWord whether text follows a character of words
    Outcome search(Text text, Text end, bool previousIsWord);

    /// Reads backwards from a match's end; returns the leftmost start not before limit that isStart accepts, or null.
    /// @param end where the whole text ends
    template<typename IsStart>
    Text matchBackwards(Text limit, Text matchEnd, Text end, IsStart isStart);

private:
    using Row = std::int32_t; ///< a state: the index of its first entry in the table

    struct State {
        std::uint32_t firstPlace; ///< its places in the program, most preferred first
        std::uint32_t placeCount;
        bool restarts;       ///< whether a match may still begin anywhere
        bool previousIsWord; ///< what a word boundary at a new start depends on
        bool isMatch;

        bool isIdle() const { return placeCount == 0; }
    };

    /// What leads from one state to the next is the row, or its complement when arriving there has to be noticed.
    static Row constexpr kUnknown = INT32_MIN;
    static std::size_t constexpr kMostStates = 256;

    Outcome run(Row row, Text text, Text limit, Text end);
    Row startRow(bool restarts, bool previousIsWord);
    Row step(Row row, std::uint8_t symbolClass);
    void follow(State const& source, std::uint8_t symbolClass);
    void consume(std::uint16_t const* places, std::size_t count, std::uint8_t symbolClass);
    void addReachable(std::uint16_t index);
    bool mayStartBefore(State const& source, std::uint8_t symbolClass) const;
    Row intern(bool restarts, bool previousIsWord);
    void clearReached();
    void forgetStates();
    State const& stateOf(Row row) const { return m_states[static_cast<std::size_t>(row) / m_width]; }

    MoDiffAlphabet const& m_alphabet;
    MoDiffProgram::Steps const& m_program;
    bool const m_prefersEarlierWays;
    bool const m_startsAtWordBoundary;
    std::size_t const m_width; ///< entries in a row

    std::vector<Row> m_table;
    std::vector<State> m_states;
    std::vector<std::uint16_t> m_places;
    std::array<Row, 4> m_startRows{};

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
        Row const next = m_table[static_cast<std::size_t>(row) + m_alphabet.classOfByte(text[-1])];
        if (next >= 0) {
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
        if (state.isIdle())
            break;
    }
    return leftmost;
}

#endif
