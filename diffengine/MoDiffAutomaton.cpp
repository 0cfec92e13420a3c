#include "MoDiffAutomaton.h"

#include <algorithm>

namespace {

using Step = MoDiffProgram::Step;

} // namespace

MoDiffAutomaton::MoDiffAutomaton(MoDiffAlphabet const& alphabet, MoDiffProgram::Steps const& program,
                                 bool prefersEarlierWays, bool startsAtWordBoundary)
    : m_alphabet(alphabet), m_program(program), m_prefersEarlierWays(prefersEarlierWays),
      m_startsAtWordBoundary(startsAtWordBoundary), m_width(alphabet.size()),
      m_isReached(program.steps.size(), false) {
    m_table.reserve(kMostStates * m_width);
    m_states.reserve(kMostStates);
    m_places.reserve(kMostStates * program.steps.size());
    m_reached.reserve(program.steps.size());
    forgetStates();
    addReachable(m_program.start);
    m_startPlaces = m_reached;
    clearReached();
}

MoDiffAutomaton::Outcome MoDiffAutomaton::matchAt(Text text, Text limit, Text end) {
    return run(startRow(false, false), text, limit, end);
}

MoDiffAutomaton::Outcome MoDiffAutomaton::search(Text text, Text end, bool previousIsWord) {
    return run(startRow(true, m_startsAtWordBoundary && previousIsWord), text, end, end);
}

MoDiffAutomaton::Outcome MoDiffAutomaton::run(Row row, Text text, Text limit, Text end) {
    std::uint8_t const* const byteClasses = m_alphabet.byteClasses();
    Row const* const table = m_table.data(); // never moves: its memory is reserved
    Text matchEnd = nullptr;
    while (text < limit) {
        Row const next = table[static_cast<std::size_t>(row) + byteClasses[*text]];
        if (next == row) { // what stays in a state needs not wait for the table to tell the next one
            do
                ++text;
            while (text < limit && table[static_cast<std::size_t>(row) + byteClasses[*text]] == row);
            continue;
        }
        if (next >= 0) {
            row = next;
            ++text;
            continue;
        }
        if (next != kUnknown) {
            row = ~next;
            ++text;
        } else {
            MoDiffAlphabet::Symbol const symbol = m_alphabet.symbolAt(text, end);
            row = step(row, symbol.symbolClass);
            text += symbol.length;
        }
        State const& state = stateOf(row);
        if (state.isMatch)
            matchEnd = text;
        if (state.isIdle())
            break;
    }
    return {matchEnd, text};
}

MoDiffAutomaton::Row MoDiffAutomaton::startRow(bool restarts, bool previousIsWord) {
    std::size_t const index = (restarts ? 2U : 0U) + (previousIsWord ? 1U : 0U);
    if (m_startRows[index] == kUnknown) {
        if (!restarts)
            addReachable(m_program.start);
        Row const row = intern(restarts, previousIsWord);
        m_startRows[index] = row;
    }
    return m_startRows[index];
}

MoDiffAutomaton::Row MoDiffAutomaton::step(Row row, std::uint8_t symbolClass) {
    std::size_t const entry = static_cast<std::size_t>(row) + symbolClass;
    Row const known = m_table[entry];
    if (known != kUnknown)
        return known < 0 ? ~known : known;

    State const source = stateOf(row);
    follow(source, symbolClass);
    // Once a match is found, only ways preferred to it go on.
    bool const restarts = source.restarts && !m_isDecided;
    bool const isWord = m_alphabet.isCombining(symbolClass) ? source.previousIsWord : m_alphabet.isWord(symbolClass);
    std::size_t const statesBefore = m_states.size();
    Row const target = intern(restarts, restarts && m_startsAtWordBoundary && isWord);
    if (m_states.size() >= statesBefore) { // else all states, the source among them, have been forgotten
        State const& state = stateOf(target);
        m_table[entry] = state.isMatch || state.isIdle() ? ~target : target;
    }
    return target;
}

/// Collects in m_reached what the state's ways, and a new start if there may be one, come to by one symbol.
void MoDiffAutomaton::follow(State const& source, std::uint8_t symbolClass) {
    m_isDecided = false;
    consume(m_places.data() + source.firstPlace, source.placeCount, symbolClass);
    if (mayStartBefore(source, symbolClass))
        consume(m_startPlaces.data(), m_startPlaces.size(), symbolClass);
}

void MoDiffAutomaton::consume(std::uint16_t const* places, std::size_t count, std::uint8_t symbolClass) {
    for (std::size_t i = 0; i < count && !m_isDecided; ++i) {
        Step const& step = m_program.steps[places[i]];
        if (step.kind == Step::eConsume && MoDiffAlphabet::includes(step.classes, symbolClass))
            addReachable(step.next);
    }
}

/// Adds the consuming and matching steps that a step leads to without consuming, the preferred ones first. A match
/// makes all that would come after it irrelevant, where earlier ways are preferred.
void MoDiffAutomaton::addReachable(std::uint16_t index) {
    if (m_isDecided || m_isReached[index])
        return;
    m_isReached[index] = true;
    Step const& step = m_program.steps[index];
    if (step.kind == Step::eSplit) {
        addReachable(step.next);
        addReachable(step.other);
        return;
    }
    m_reached.push_back(index);
    m_isDecided = m_prefersEarlierWays && step.kind == Step::eMatch;
}

/// Whether a match may begin right before a symbol.
bool MoDiffAutomaton::mayStartBefore(State const& source, std::uint8_t symbolClass) const {
    return source.restarts && (!m_startsAtWordBoundary || m_alphabet.isBoundary(source.previousIsWord, symbolClass));
}

/// Finds or makes the state of the places in m_reached, which is empty afterwards.
MoDiffAutomaton::Row MoDiffAutomaton::intern(bool restarts, bool previousIsWord) {
    auto const isSame = [&](State const& state) {
        return state.restarts == restarts && state.previousIsWord == previousIsWord &&
               state.placeCount == m_reached.size() &&
               std::equal(m_reached.begin(), m_reached.end(), m_places.begin() + state.firstPlace);
    };
    auto found = std::find_if(m_states.begin(), m_states.end(), isSame);
    if (found == m_states.end()) {
        if (m_states.size() == kMostStates)
            forgetStates();
        auto const isMatch = [this](std::uint16_t place) { return m_program.steps[place].kind == Step::eMatch; };
        m_states.push_back({static_cast<std::uint32_t>(m_places.size()), static_cast<std::uint32_t>(m_reached.size()),
                            restarts, previousIsWord, std::any_of(m_reached.begin(), m_reached.end(), isMatch)});
        m_places.insert(m_places.end(), m_reached.begin(), m_reached.end());
        m_table.resize(m_table.size() + m_width, kUnknown);
        found = m_states.end() - 1;
    }
    clearReached();
    return static_cast<Row>((found - m_states.begin()) * static_cast<std::ptrdiff_t>(m_width));
}

void MoDiffAutomaton::clearReached() {
    m_reached.clear();
    m_isReached.assign(m_isReached.size(), false);
    m_isDecided = false;
}

void MoDiffAutomaton::forgetStates() {
    m_table.clear();
    m_states.clear();
    m_places.clear();
    m_startRows.fill(kUnknown);
}
