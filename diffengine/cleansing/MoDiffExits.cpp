#include "MoDiffExits.h"

bool MoDiffExits::derive(MoDiffStateTable& table, Row state) {
    if (!hasRoom(table))
        return false;
    divide(table, state);
    followWay(table, state);
    listLoners(table.alphabet());
    return true;
}

/// Divides the classes that lead away from a state into those that begin the way, which share a target, and loners.
void MoDiffExits::divide(MoDiffStateTable& table, Row state) {
    std::uint64_t const visible = table.alphabet().visibleClasses();
    m_lonerClasses = table.alphabet().allClasses() & ~visible;
    m_firstClasses = 0;
    m_reached = state;
    for (std::uint8_t symbolClass = 1; symbolClass < table.width(); ++symbolClass) {
        Row const target = table.step(state, symbolClass);
        if (target == state)
            continue;
        bool const isQuiet = !table.isEventful(target) && !table.isEventful(state);
        bool const isOnWay = isQuiet && (m_firstClasses == 0 || target == m_reached);
        if (isOnWay && MoDiffAlphabet::includes(visible, symbolClass)) {
            m_firstClasses |= std::uint64_t{1} << symbolClass;
            m_reached = target;
        } else {
            m_lonerClasses |= std::uint64_t{1} << symbolClass;
        }
    }
}

/// Appends the sets of the way as long as one state is all that it leads to. It ends before a set that shares
/// characters with its beginning, for there another one might begin.
void MoDiffExits::followWay(MoDiffStateTable& table, Row state) {
    m_way.clear();
    std::uint64_t classes = m_firstClasses;
    while (classes != 0) {
        m_way.push_back(table.alphabet().charactersOf(classes));
        bool const isOpen = m_reached != state && !table.isEventful(m_reached);
        if (!isOpen || m_way.size() == MoDiffProgram::kLongestPrefix || !hasRoom(table))
            return;
        classes = leaveWay(table, state);
        if ((classes & m_firstClasses) != 0)
            return;
    }
}

/// Goes one symbol further. Returns the classes after which reading differs from reading in the state: only these
/// lead on. Loners among them end the search anyway, wherever they lead.
std::uint64_t MoDiffExits::leaveWay(MoDiffStateTable& table, Row state) {
    std::uint64_t classes = 0;
    Row next = state;
    bool isFork = false;
    for (std::uint8_t symbolClass = 1; symbolClass < table.width(); ++symbolClass) {
        Row const target = table.step(m_reached, symbolClass);
        if (target == table.step(state, symbolClass))
            continue;
        classes |= std::uint64_t{1} << symbolClass;
        if (MoDiffAlphabet::includes(m_lonerClasses, symbolClass))
            continue;
        isFork = isFork || (next != state && next != target);
        next = target;
    }
    m_reached = isFork ? state : next;
    return classes;
}

void MoDiffExits::listLoners(MoDiffAlphabet const& alphabet) {
    for (unsigned byte = 0; byte < m_loners.size(); ++byte) {
        std::uint8_t const symbolClass = alphabet.classOfByte(static_cast<unsigned char>(byte));
        m_loners[byte] =
            symbolClass == MoDiffAlphabet::kDecode || MoDiffAlphabet::includes(m_lonerClasses, symbolClass);
    }
}
