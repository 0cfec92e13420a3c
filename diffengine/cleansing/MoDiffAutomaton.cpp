#include "MoDiffAutomaton.h"

#include <algorithm>

namespace {

// Passing over has to be worth its start: it is tried where so many bytes have been read before, and again so far
// behind a try that gained little.
std::ptrdiff_t const kPatience = 64;
std::ptrdiff_t const kLittle = 16;

} // namespace

MoDiffAutomaton::MoDiffAutomaton(MoDiffProgram const& program, Direction direction, std::size_t stateLimit)
    : m_table(program, direction, stateLimit), m_persistence(stateLimit) {
}

bool MoDiffAutomaton::isPersistent() {
    if (m_isPersistent == Answer::eUnknown)
        m_isPersistent = m_persistence.holds(m_table) ? Answer::eYes : Answer::eNo;
    return m_isPersistent == Answer::eYes;
}

MoDiffAutomaton::Outcome MoDiffAutomaton::search(Text text, Text end, bool previousIsWord) {
    return run(m_table.start(true, previousIsWord), text, end);
}

/// Reads on from a state.
/// INVARIANT: row is the state that the text before text leads to, arrived what leads to it in the table, and
/// matchEnd where that text last was a match.
MoDiffAutomaton::Outcome MoDiffAutomaton::run(Row row, Text text, Text end) {
    std::uint8_t const* const byteClasses = m_table.alphabet().byteClasses();
    Transition const* const transitions = m_table.transitions();
    Transition arrived = m_table.transitionTo(row);
    Text matchEnd = m_table.state(row).isMatch ? text : nullptr;
    Text tryFrom = text + kPatience; // where passing over is worth a try
    while (text < end) {
        Transition const next = transitions[row + byteClasses[*text]];
        if (!Table::isNoticed(next) && next != arrived) {
            row = arrived = next;
            ++text;
            continue;
        }
        Text const symbolStart = text;
        bool mayPassOver = true;
        if (next == arrived && text < tryFrom) {
            // The comparison is foreseen, so that no look-up waits for the one before.
            Text const stop = std::min(end, tryFrom);
            do
                ++text;
            while (text < stop && transitions[row + byteClasses[*text]] == arrived);
            mayPassOver = false;
        } else if (next != Table::kUnknown) {
            mayPassOver = next == arrived || (next & Table::kAccelerated) != 0;
            arrived = next;
            ++text;
        } else {
            arrived = read(row, text, end);
            mayPassOver = (arrived & Table::kAccelerated) != 0;
        }
        row = Table::rowOf(arrived);
        if ((arrived & Table::kIsLast) != 0)
            return {(arrived & Table::kMatches) != 0 ? text : matchEnd, text, symbolStart};
        if (mayPassOver && text >= tryFrom) {
            text = passOver(row, text, end, tryFrom);
            arrived = m_table.transitionTo(row);
        }
        if ((arrived & Table::kMatches) != 0)
            matchEnd = text;
    }
    return {matchEnd, text, text};
}

/// Reads a symbol whose transition the table doesn't tell, and passes over it.
MoDiffAutomaton::Transition MoDiffAutomaton::read(Row row, Text& text, Text end) {
    MoDiffAlphabet::Symbol const symbol = m_table.alphabet().symbolAt(text, end);
    text += symbol.length;
    return m_table.transitionTo(m_table.step(row, symbol.symbolClass));
}

/// Passes over text that leaves a state as it is; returns a place where reading has to go on in that state.
/// @param tryFrom is set to where passing over is worth being tried again
MoDiffAutomaton::Text MoDiffAutomaton::passOver(Row row, Text text, Text end, Text& tryFrom) {
    Text reached = text;
    if (MoDiffCandidateScanner const* const accelerator = acceleratorOf(row)) {
        MoDiffCandidateScanner::Cursor cursor;
        Text const exit = accelerator->find(text, end, cursor);
        // A way out that the end cuts off can't become a match; one that a loner meets can.
        reached = exit ? accelerator->startBefore(text, exit) : end;
    }
    if (reached - text < kLittle)
        tryFrom = reached + kPatience;
    return reached;
}

/// The accelerator of a state, which is made when it is first asked for; null when it would be of no use.
MoDiffCandidateScanner const* MoDiffAutomaton::acceleratorOf(Row row) {
    if (m_table.state(row).accelerator == Table::kNotTried) {
        m_table.setAccelerator(row, nullptr);
        if (m_table.hasRoomForAccelerator() && m_exits.derive(m_table, row)) {
            MoDiffCandidateScanner const accelerator(m_exits.way(), m_exits.loners());
            m_table.setAccelerator(row, accelerator.isQuick() ? &accelerator : nullptr);
        }
    }
    return m_table.accelerator(row);
}
