#include "MoDiffStateTable.h"

#include <algorithm>

namespace {

using NfaState = MoDiffProgram::NfaState;

/// The logarithm of the least power of two that is not below width.
unsigned shiftFor(std::size_t width) {
    unsigned shift = 0;
    while (std::size_t{1} << shift < width)
        ++shift;
    return shift;
}

} // namespace

MoDiffStateTable::MoDiffStateTable(MoDiffProgram const& program, Direction direction, std::size_t stateLimit)
    : m_alphabet(program.alphabet()), m_nfa(direction == eForward ? program.forward() : program.backward()),
      m_prefix(program.prefix()), m_headLength(program.headLength()), m_prefersEarlierWays(direction == eForward),
      m_startsAtWordBoundary(direction == eForward && program.startsAtWordBoundary()), m_stateLimit(stateLimit),
      m_width(m_alphabet.size()), m_shift(shiftFor(m_width)), m_isReached(m_nfa.states.size(), false) {
    m_transitions.reserve(m_stateLimit << m_shift);
    m_states.reserve(m_stateLimit);
    m_nfaStates.reserve(m_stateLimit * m_nfa.states.size());
    m_reached.reserve(m_nfa.states.size());
    m_accelerators.reserve(kMostAccelerators);
    flush();
    addReachable(m_nfa.start);
    m_startNfaStates = m_reached;
    clearReached();
}

MoDiffStateTable::Transition MoDiffStateTable::transitionTo(Row row) const {
    State const& target = state(row);
    return row | (target.isMatch ? kMatches : 0) | (target.isLast ? kIsLast : 0) |
           (target.accelerator >= 0 ? kAccelerated : 0);
}

MoDiffStateTable::Row MoDiffStateTable::start(bool restarts, bool previousIsWord) {
    std::size_t const index = (restarts ? 2U : 0U) + (previousIsWord ? 1U : 0U);
    if (m_startRows[index] == kUnknown) {
        if (!restarts)
            addReachable(m_nfa.start);
        Row const row = intern(restarts, previousIsWord);
        m_startRows[index] = row;
    }
    return m_startRows[index];
}

/// All characters at a position of the head share a class, so that any of them leads the same way.
MoDiffStateTable::Row MoDiffStateTable::deriveHead() {
    Row row = start(false, false);
    for (std::size_t position = 0; position < m_headLength; ++position) {
        unsigned char character = 0;
        while (!m_prefix[position][character])
            ++character;
        row = step(row, m_alphabet.classOfByte(character));
    }
    m_headRow = row;
    return row;
}

MoDiffStateTable::Row MoDiffStateTable::step(Row row, std::uint8_t symbolClass) {
    std::size_t const entry = row + symbolClass;
    Transition const known = m_transitions[entry];
    if (known != kUnknown)
        return rowOf(known);

    State const source = state(row);
    follow(source, symbolClass);
    // Once a match is found, only ways preferred to it go on.
    bool const restarts = source.restarts && !m_isDecided;
    bool const isWord = m_alphabet.isCombining(symbolClass) ? source.previousIsWord : m_alphabet.isWord(symbolClass);
    std::size_t const statesBefore = m_states.size();
    Row const target = intern(restarts, restarts && m_startsAtWordBoundary && isWord);
    if (m_states.size() >= statesBefore) // else a flush has taken the source away
        m_transitions[entry] = transitionTo(target);
    return target;
}

/// Collects in m_reached what the state's ways, and a new start if there may be one, come to by one symbol.
void MoDiffStateTable::follow(State const& source, std::uint8_t symbolClass) {
    m_isDecided = false;
    consume(m_nfaStates.data() + source.firstNfaState, source.nfaStateCount, symbolClass);
    if (mayStartBefore(source, symbolClass))
        consume(m_startNfaStates.data(), m_startNfaStates.size(), symbolClass);
}

void MoDiffStateTable::consume(std::uint16_t const* nfaStates, std::size_t count, std::uint8_t symbolClass) {
    for (std::size_t i = 0; i < count; ++i) {
        NfaState const& nfaState = m_nfa.states[nfaStates[i]];
        if (nfaState.kind == NfaState::eConsume && MoDiffAlphabet::includes(nfaState.classes, symbolClass))
            addReachable(nfaState.next);
    }
}

/// Adds the consuming and matching states that an NFA state leads to without consuming, the preferred ones first. A
/// match makes all that would come after it irrelevant, where earlier ways are preferred.
void MoDiffStateTable::addReachable(std::uint16_t index) {
    if (m_isDecided || m_isReached[index])
        return;
    m_isReached[index] = true;
    NfaState const& nfaState = m_nfa.states[index];
    if (nfaState.kind == NfaState::eSplit) {
        addReachable(nfaState.next);
        addReachable(nfaState.other);
        return;
    }
    m_reached.push_back(index);
    m_isDecided = m_prefersEarlierWays && nfaState.kind == NfaState::eMatch;
}

/// Whether a match may begin right before a symbol.
bool MoDiffStateTable::mayStartBefore(State const& source, std::uint8_t symbolClass) const {
    return source.restarts && (!m_startsAtWordBoundary || m_alphabet.isBoundary(source.previousIsWord, symbolClass));
}

/// Finds or makes the state of the NFA states in m_reached, which is empty afterwards.
MoDiffStateTable::Row MoDiffStateTable::intern(bool restarts, bool previousIsWord) {
    auto const isSame = [&](State const& state) {
        return state.restarts == restarts && state.previousIsWord == previousIsWord &&
               state.nfaStateCount == m_reached.size() &&
               std::equal(m_reached.begin(), m_reached.end(), m_nfaStates.begin() + state.firstNfaState);
    };
    auto found = std::find_if(m_states.begin(), m_states.end(), isSame);
    if (found == m_states.end()) {
        if (!hasRoomFor(1))
            flush();
        m_states.push_back(describe(restarts, previousIsWord));
        m_nfaStates.insert(m_nfaStates.end(), m_reached.begin(), m_reached.end());
        m_transitions.resize(m_states.size() << m_shift, kUnknown);
        found = m_states.end() - 1;
    }
    clearReached();
    return static_cast<Row>(static_cast<std::size_t>(found - m_states.begin()) << m_shift);
}

/// A new state of the NFA states in m_reached.
MoDiffStateTable::State MoDiffStateTable::describe(bool restarts, bool previousIsWord) const {
    auto const isMatch = [this](std::uint16_t index) { return m_nfa.states[index].kind == NfaState::eMatch; };
    auto const count = static_cast<std::uint32_t>(m_reached.size());
    bool const hasMatch = std::any_of(m_reached.begin(), m_reached.end(), isMatch);
    bool const isLast = count == (hasMatch ? 1 : 0); // with a match, no other one may begin any more
    return {
        static_cast<std::uint32_t>(m_nfaStates.size()), count, restarts, previousIsWord, hasMatch, isLast, kNotTried};
}

bool MoDiffStateTable::isSubset(Row part, Row whole) const {
    auto const begin = m_nfaStates.begin() + state(part).firstNfaState;
    auto const wholeBegin = m_nfaStates.begin() + state(whole).firstNfaState;
    auto const wholeEnd = wholeBegin + state(whole).nfaStateCount;
    return std::all_of(begin, begin + state(part).nfaStateCount,
                       [&](std::uint16_t nfaState) { return std::find(wholeBegin, wholeEnd, nfaState) != wholeEnd; });
}

void MoDiffStateTable::setAccelerator(Row row, MoDiffCandidateScanner const* accelerator) {
    State& target = m_states[indexOf(row)];
    target.accelerator = kUseless;
    if (!accelerator)
        return;
    target.accelerator = static_cast<std::int8_t>(m_accelerators.size());
    m_accelerators.push_back(*accelerator);
    for (Transition& transition : m_transitions) {
        if (transition != kUnknown && rowOf(transition) == row)
            transition |= kAccelerated;
    }
}

MoDiffCandidateScanner const* MoDiffStateTable::accelerator(Row row) const {
    std::int8_t const index = state(row).accelerator;
    return index < 0 ? nullptr : &m_accelerators[static_cast<std::size_t>(index)];
}

void MoDiffStateTable::clearReached() {
    m_reached.clear();
    m_isReached.assign(m_isReached.size(), false);
    m_isDecided = false;
}

void MoDiffStateTable::flush() {
    m_transitions.clear();
    m_states.clear();
    m_nfaStates.clear();
    m_startRows.fill(kUnknown);
    m_headRow = kUnknown;
    m_accelerators.clear();
}
