#include "MoDiffAutomaton.h"

#include <algorithm>

namespace {

using Step = MoDiffProgram::Step;

// Leaping has to be worth its start: it is tried where so many bytes have been read before, and again so far behind a
// leap that was short.
std::ptrdiff_t const kPatience = 64;
std::ptrdiff_t const kShortLeap = 16;

/// The logarithm of the least power of two that is not below width.
unsigned shiftFor(std::size_t width) {
    unsigned shift = 0;
    while (std::size_t{1} << shift < width)
        ++shift;
    return shift;
}

} // namespace

MoDiffAutomaton::MoDiffAutomaton(MoDiffProgram const& program, Direction direction)
    : m_alphabet(program.alphabet()), m_program(direction == eForward ? program.forward() : program.backward()),
      m_headLength(program.headLength()), m_prefersEarlierWays(direction == eForward),
      m_startsAtWordBoundary(direction == eForward && program.startsAtWordBoundary()), m_width(m_alphabet.size()),
      m_shift(shiftFor(m_width)), m_isReached(m_program.steps.size(), false) {
    m_table.reserve(kMostStates << m_shift);
    m_states.reserve(kMostStates);
    m_places.reserve(kMostStates * m_program.steps.size());
    m_reached.reserve(m_program.steps.size());
    m_scanners.reserve(kMostScanners);
    m_way.reserve(MoDiffProgram::kLongestPrefix);
    forgetStates();
    addReachable(m_program.start);
    m_startPlaces = m_reached;
    clearReached();
}

/// Finds out where the head leads to.
void MoDiffAutomaton::followHead(Text text) {
    Row row = startRow(false, false);
    for (std::size_t i = 0; i < m_headLength; ++i)
        row = step(row, m_alphabet.classOfByte(text[i]));
    m_headRow = row;
    m_isHeadMatch = stateOf(row).isMatch;
    if (isMostlyKept(row))
        makeScanner(row);
}

/// Whether most characters leave a state as it is.
bool MoDiffAutomaton::isMostlyKept(Row row) {
    std::size_t keeping = 0;
    for (std::uint8_t symbolClass = 1; symbolClass < m_width && m_states.size() < kMostStates; ++symbolClass)
        keeping += step(row, symbolClass) == row ? 1 : 0;
    return 2 * keeping > m_width;
}

MoDiffAutomaton::Outcome MoDiffAutomaton::search(Text text, Text end, bool previousIsWord) {
    return run(startRow(true, m_startsAtWordBoundary && previousIsWord), text, end);
}

/// What leads to a row in the table.
MoDiffAutomaton::Row MoDiffAutomaton::arrival(Row row) const {
    State const& state = stateOf(row);
    return row | (state.isMatch ? kMatches : 0) | (state.isLast ? kIsLast : 0) | (state.scanner >= 0 ? kLeaps : 0);
}

MoDiffAutomaton::Outcome MoDiffAutomaton::run(Row row, Text text, Text end) {
    std::uint8_t const* const byteClasses = m_alphabet.byteClasses();
    Row const* const table = m_table.data(); // never moves: its memory is reserved
    Row arrived = arrival(row);
    Text matchEnd = stateOf(row).isMatch ? text : nullptr;
    Text leapFrom = text + kPatience;
    while (text < end) {
        Row const next = table[row + byteClasses[*text]];
        if (next == arrived) { // what stays in a state needs not wait for the table to tell the next one
            if (text < leapFrom) {
                Text const loopEnd = std::min(end, leapFrom);
                do
                    ++text;
                while (text < loopEnd && table[row + byteClasses[*text]] == arrived);
            } else {
                text = std::max(leap(row, text, end, leapFrom), text + 1);
                arrived = arrival(row);
            }
            if ((arrived & kMatches) != 0)
                matchEnd = text;
            continue;
        }
        if (!isNoticed(next)) {
            row = arrived = next;
            ++text;
            continue;
        }
        Text const symbolStart = text;
        if (next != kUnknown) {
            arrived = next;
            row = next & kRowMask;
            ++text;
        } else {
            MoDiffAlphabet::Symbol const symbol = m_alphabet.symbolAt(text, end);
            row = step(row, symbol.symbolClass);
            arrived = arrival(row);
            text += symbol.length;
        }
        if ((arrived & kMatches) != 0)
            matchEnd = text;
        if ((arrived & kIsLast) != 0)
            return {matchEnd, text, symbolStart};
        if ((arrived & kLeaps) != 0 && text >= leapFrom) {
            text = leap(row, text, end, leapFrom);
            if ((arrived & kMatches) != 0)
                matchEnd = text;
        }
    }
    return {matchEnd, text, text};
}

/// Passes over text that leaves a state as it is; returns a place where reading has to go on in that state.
/// @param leapFrom is set to where leaping is worth being tried again
MoDiffAutomaton::Text MoDiffAutomaton::leap(Row row, Text text, Text end, Text& leapFrom) {
    if (stateOf(row).scanner == kNotTried)
        makeScanner(row);
    Text reached = text;
    if (stateOf(row).scanner != kUseless) {
        MoDiffCandidateScanner const& scanner = m_scanners[static_cast<std::size_t>(stateOf(row).scanner)];
        MoDiffCandidateScanner::Cursor cursor;
        reached = scanner.find(text, end, cursor);
        // A way out that the end cuts off can't become a match; one that a loner meets can.
        reached = reached ? scanner.startBefore(text, reached) : end;
    }
    if (reached - text < kShortLeap)
        leapFrom = reached + kPatience;
    return reached;
}

/// Makes the scanner that finds where a state is left, if that may be worth it.
void MoDiffAutomaton::makeScanner(Row row) {
    stateOf(row).scanner = kUseless;
    MoDiffCandidateScanner::Bytes loners;
    if (m_scanners.size() == kMostScanners || !deriveExits(row, loners))
        return;
    MoDiffCandidateScanner const scanner(m_way, loners);
    if (!scanner.isQuick())
        return;
    stateOf(row).scanner = static_cast<std::int8_t>(m_scanners.size());
    m_scanners.push_back(scanner);
    for (Row& entry : m_table) {
        if (entry != kUnknown && (entry & kRowMask) == row)
            entry |= kLeaps;
    }
}

/// Derives how a state is left: by one of the loners whatever follows, or by the first characters of the way in
/// m_way. Where text follows the way for a while only, reading goes on as if it had never left the state; so nothing
/// is lost by looking for the whole way at once. Returns false when that can't be told.
bool MoDiffAutomaton::deriveExits(Row state, MoDiffCandidateScanner::Bytes& loners) {
    std::uint64_t const visible = m_alphabet.visibleClasses();
    // Deriving must not make the automaton forget its states.
    auto const hasRoom = [this] { return m_states.size() + 2 * m_width <= kMostStates; };
    if (!hasRoom())
        return false;

    std::uint64_t lonerClasses = m_alphabet.allClasses() & ~visible;
    std::uint64_t first = 0;
    Row place = state; // the way's
    for (std::uint8_t symbolClass = 1; symbolClass < m_width; ++symbolClass) {
        Row const target = step(state, symbolClass);
        if (target == state)
            continue;
        std::uint64_t const mark = std::uint64_t{1} << symbolClass;
        bool const isOnWay = (place == state || target == place) && !isEventful(target) && !isEventful(state);
        if (isOnWay && (visible & mark) != 0) {
            first |= mark;
            place = target;
        } else {
            lonerClasses |= mark;
        }
    }
    m_way.clear();
    // On the way, the characters after which reading differs from reading in the state lead on. Loners end the search
    // anyway, and what else leaves the state must not be met on the way.
    for (std::uint64_t classes = first; classes != 0 && (classes & first) == (m_way.empty() ? first : 0);) {
        m_way.push_back(m_alphabet.charactersOf(classes));
        if (place == state || isEventful(place) || m_way.size() == MoDiffProgram::kLongestPrefix || !hasRoom())
            break;
        classes = 0;
        Row next = state;
        bool isFork = false;
        for (std::uint8_t symbolClass = 1; symbolClass < m_width; ++symbolClass) {
            Row const target = step(place, symbolClass);
            if (target == step(state, symbolClass))
                continue;
            classes |= std::uint64_t{1} << symbolClass;
            if (MoDiffAlphabet::includes(lonerClasses, symbolClass))
                continue;
            isFork = isFork || (next != state && next != target);
            next = target;
        }
        place = isFork ? state : next;
    }
    for (unsigned byte = 0; byte < loners.size(); ++byte) {
        std::uint8_t const symbolClass = m_alphabet.classOfByte(static_cast<unsigned char>(byte));
        loners[byte] = symbolClass == MoDiffAlphabet::kDecode || MoDiffAlphabet::includes(lonerClasses, symbolClass);
    }
    return true;
}

bool MoDiffAutomaton::isPersistent() {
    if (m_isPersistent == Answer::eUnknown && m_headRow != kUnknown)
        m_isPersistent = derivePersistence();
    return m_isPersistent == Answer::eYes;
}

/// Looks at every state that can be reached from the head.
MoDiffAutomaton::Answer MoDiffAutomaton::derivePersistence() {
    std::bitset<kMostStates> isSeen;
    std::array<Row, kMostStates> pending;
    std::size_t pendingCount = 0;
    auto const see = [&](Row row) {
        std::size_t const index = row >> m_shift;
        if (!isSeen[index])
            pending[pendingCount++] = row;
        isSeen.set(index);
    };
    see(m_headRow);
    while (pendingCount > 0) {
        Row const row = pending[--pendingCount];
        if (stateOf(row).isLast || stateOf(row).isMatch) // what has matched can't fail
            continue;
        if (!includesHead(row))
            return Answer::eNo;
        for (std::size_t symbolClass = 1; symbolClass < m_width; ++symbolClass) {
            if (m_states.size() + 2 > kMostStates) // the next ones might make it forget the others
                return Answer::eNo;
            Row const target = step(row, static_cast<std::uint8_t>(symbolClass));
            // Between a carriage return and the line feed that is taken along no head ends.
            bool const isWithinPair = symbolClass == m_alphabet.returnBeforeFeed() && m_headLength > 0;
            see(isWithinPair ? step(target, m_alphabet.classOfByte('\n')) : target);
        }
    }
    return Answer::eYes;
}

/// Whether a state's places include those that the head leads to.
bool MoDiffAutomaton::includesHead(Row row) const {
    State const& state = stateOf(row);
    State const& head = stateOf(m_headRow);
    auto const places = m_places.begin() + state.firstPlace;
    auto const headPlaces = m_places.begin() + head.firstPlace;
    return std::all_of(headPlaces, headPlaces + head.placeCount, [&](std::uint16_t place) {
        return std::find(places, places + state.placeCount, place) != places + state.placeCount;
    });
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
    std::size_t const entry = row + symbolClass;
    Row const known = m_table[entry];
    if (known != kUnknown)
        return known & kRowMask;

    State const source = stateOf(row);
    follow(source, symbolClass);
    // Once a match is found, only ways preferred to it go on.
    bool const restarts = source.restarts && !m_isDecided;
    bool const isWord = m_alphabet.isCombining(symbolClass) ? source.previousIsWord : m_alphabet.isWord(symbolClass);
    std::size_t const statesBefore = m_states.size();
    Row const target = intern(restarts, restarts && m_startsAtWordBoundary && isWord);
    if (m_states.size() >= statesBefore) // else all states, the source among them, have been forgotten
        m_table[entry] = arrival(target);
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
        auto const count = static_cast<std::uint32_t>(m_reached.size());
        bool const hasMatch = std::any_of(m_reached.begin(), m_reached.end(), isMatch);
        bool const isLast = !hasMatch ? count == 0 : count == 1 && !restarts;
        m_states.push_back({static_cast<std::uint32_t>(m_places.size()), count, restarts, previousIsWord, hasMatch,
                            isLast, kNotTried});
        m_places.insert(m_places.end(), m_reached.begin(), m_reached.end());
        m_table.resize(m_states.size() << m_shift, kUnknown);
        found = m_states.end() - 1;
    }
    auto const row = static_cast<Row>(static_cast<std::size_t>(found - m_states.begin()) << m_shift);
    if (m_reached.empty() && !restarts)
        m_deadArrival = arrival(row);
    clearReached();
    return row;
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
    m_headRow = kUnknown;
    m_deadArrival = kNever;
    m_scanners.clear();
}
