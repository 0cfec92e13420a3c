#ifndef MO_DIFF_STATE_TABLE_H
#define MO_DIFF_STATE_TABLE_H

#include "MoDiffCandidateScanner.h"
#include "MoDiffProgram.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// A program as deterministic finite automaton (DFA), whose states and transitions are derived when a text first asks
/// for them. Its memory is taken when it is built, so that deriving allocates nothing.
///
/// A state is a set of NFA states, ordered by preference, and what decides where further matches may begin. There is
/// a limit to the states: when it is reached, all are forgotten (a flush) and derived anew as they are needed.
///
/// INVARIANTS:
///  - Column 0 of the table (MoDiffAlphabet::kDecode) stays unknown: its bytes are no symbols by themselves.
///  - A known transition is transitionTo() its target; a flush leaves no transition and no row from before, but the
///    one that step() or start() returns.
class MoDiffStateTable {
public:
    enum Direction {
        eForward, ///< a match ends where ICU ends it
        eBackward ///< every match counts
    };

    using Row = std::uint32_t;        ///< a state: the index of its first transition in the table
    using Transition = std::uint32_t; ///< the target's row, marked when arriving there has to be noticed

    static Transition constexpr kUnknown = Transition{1} << 31;
    static Transition constexpr kMatches = Transition{1} << 30;     ///< the target is a match
    static Transition constexpr kIsLast = Transition{1} << 29;      ///< what follows the target doesn't matter
    static Transition constexpr kAccelerated = Transition{1} << 28; ///< the target has an accelerator
    static Row rowOf(Transition transition) { return transition & (kAccelerated - 1); }
    /// True for an unknown transition, too. One that is not noticed is its target's row.
    static bool isNoticed(Transition transition) { return transition >= kAccelerated; }

    /// In practice an expression has some tens of states. 256 take some 100 kB for a catalogue's expression, which
    /// stay in the second-level cache.
    static std::size_t constexpr kMostStates = 256;
    /// An accelerator takes 1.6 kB. States that keep long texts are few.
    static std::size_t constexpr kMostAccelerators = 6;

    struct State {
        std::uint32_t firstNfaState; ///< its NFA states, most preferred first
        std::uint32_t nfaStateCount;
        bool restarts;       ///< whether a match may still begin anywhere
        bool previousIsWord; ///< what a word boundary at a new start depends on
        bool isMatch;
        bool isLast;             ///< whether what follows doesn't matter
        std::int8_t accelerator; ///< its index, or why there is none
    };
    static std::int8_t constexpr kNotTried = -1;
    static std::int8_t constexpr kUseless = -2;

    /// @param program    must outlive the table
    /// @param stateLimit at least 4
    MoDiffStateTable(MoDiffProgram const& program, Direction direction, std::size_t stateLimit);

    MoDiffAlphabet const& alphabet() const { return m_alphabet; }
    /// The number of the alphabet's classes.
    std::uint8_t width() const { return static_cast<std::uint8_t>(m_width); }
    std::size_t stateLimit() const { return m_stateLimit; }

    /// The transitions of all states; stays where it is, but not what it is, when states are derived.
    Transition const* transitions() const { return m_transitions.data(); }

    /// What a byte leads to; unknown for one that is no symbol by itself.
    Transition transition(Row row, unsigned char byte) const {
        return m_transitions[row + m_alphabet.classOfByte(byte)];
    }
    /// Whether a transition is known to end all ways without a match.
    static bool isDead(Transition transition) { return (transition & (kUnknown | kMatches | kIsLast)) == kIsLast; }

    /// The state in which reading begins.
    /// @param restarts       whether a match may begin at every symbol, or at the first one only
    /// @param previousIsWord whether a character of words stands before the text; false where it doesn't matter
    Row start(bool restarts, bool previousIsWord);
    /// The state behind the program's head, for matches that begin at one place only.
    Row head() { return m_headRow == kUnknown ? deriveHead() : m_headRow; }
    std::size_t headLength() const { return m_headLength; }
    /// The state that a symbol leads to.
    Row step(Row row, std::uint8_t symbolClass);
    /// What leads to a state in the table.
    Transition transitionTo(Row row) const;

    State const& state(Row row) const { return m_states[indexOf(row)]; }
    std::size_t indexOf(Row row) const { return row >> m_shift; }
    /// Whether reading has to notice a state, accelerated or not.
    bool isEventful(Row row) const { return state(row).isMatch || state(row).isLast; }
    /// Whether all NFA states of one state are in the other one, too.
    bool isSubset(Row part, Row whole) const;
    /// Whether so many states can be derived without a flush.
    bool hasRoomFor(std::size_t states) const { return m_states.size() + states <= m_stateLimit; }

    bool hasRoomForAccelerator() const { return m_accelerators.size() < kMostAccelerators; }
    /// Gives a state its accelerator, for which there is room, or none when that is null.
    void setAccelerator(Row row, MoDiffCandidateScanner const* accelerator);
    /// Null for a state without one.
    MoDiffCandidateScanner const* accelerator(Row row) const;

private:
    Row deriveHead();
    void follow(State const& source, std::uint8_t symbolClass);
    void consume(std::uint16_t const* nfaStates, std::size_t count, std::uint8_t symbolClass);
    void addReachable(std::uint16_t index);
    bool mayStartBefore(State const& source, std::uint8_t symbolClass) const;
    Row intern(bool restarts, bool previousIsWord);
    State describe(bool restarts, bool previousIsWord) const;
    void clearReached();
    void flush();

    MoDiffAlphabet const& m_alphabet;
    MoDiffProgram::Nfa const& m_nfa;
    MoDiffProgram::Prefix const& m_prefix;
    std::size_t const m_headLength;
    bool const m_prefersEarlierWays;
    bool const m_startsAtWordBoundary;
    std::size_t const m_stateLimit;
    std::size_t const m_width; ///< transitions in use in a row; a row takes up the next power of two
    unsigned const m_shift;    ///< from a row to its state's index

    std::vector<Transition> m_transitions;
    std::vector<State> m_states;
    std::vector<std::uint16_t> m_nfaStates; ///< of all states
    std::array<Row, 4> m_startRows{};
    Row m_headRow = kUnknown;
    std::vector<MoDiffCandidateScanner> m_accelerators;

    std::vector<std::uint16_t> m_startNfaStates;
    std::vector<std::uint16_t> m_reached; ///< the NFA states of the state that is being made
    std::vector<bool> m_isReached;        ///< by NFA state
    bool m_isDecided = false;             ///< whether a match has cut off all less preferred ways
};

#endif
