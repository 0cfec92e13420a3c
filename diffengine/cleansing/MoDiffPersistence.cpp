#include "MoDiffPersistence.h"

MoDiffPersistence::MoDiffPersistence(std::size_t stateLimit) : m_isSeen(stateLimit) {
    m_pending.reserve(stateLimit);
}

bool MoDiffPersistence::holds(MoDiffStateTable& table) {
    m_isSeen.assign(m_isSeen.size(), false);
    m_pending.clear();
    Row const head = table.head();
    see(table.indexOf(head), head);
    while (!m_pending.empty()) {
        Row const row = m_pending.back();
        m_pending.pop_back();
        if (table.isEventful(row)) // what has matched can't fail
            continue;
        if (!table.isSubset(head, row) || !seeTargets(table, row))
            return false;
    }
    return true;
}

void MoDiffPersistence::see(std::size_t index, Row row) {
    if (!m_isSeen[index])
        m_pending.push_back(row);
    m_isSeen[index] = true;
}

bool MoDiffPersistence::seeTargets(MoDiffStateTable& table, Row row) {
    MoDiffAlphabet const& alphabet = table.alphabet();
    for (std::uint8_t symbolClass = 1; symbolClass < table.width(); ++symbolClass) {
        if (!table.hasRoomFor(2))
            return false;
        Row target = table.step(row, symbolClass);
        // Between a carriage return and the line feed that is taken along no head ends.
        if (symbolClass == alphabet.returnBeforeFeed() && table.headLength() > 0)
            target = table.step(target, alphabet.classOfByte('\n'));
        see(table.indexOf(target), target);
    }
    return true;
}
