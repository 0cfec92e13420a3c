#ifndef MO_DIFF_AUTOMATON_H
#define MO_DIFF_AUTOMATON_H

#include "MoDiffExits.h"
#include "MoDiffPersistence.h"
#include "MoDiffStateTable.h"

#include <cstddef>
#include <cstdint>

/// Reads text with a DFA: all ways through a program at once, in one look-up per character. States that most text
/// leaves as they are get accelerators, which search for what leaves them many bytes at a time. Reading allocates
/// nothing; time is linear in the text read. One object must not be used by two threads at the same time.
class MoDiffAutomaton {
public:
    using Text = unsigned char const*;
    using Direction = MoDiffStateTable::Direction;

    struct Outcome {
        Text matchEnd;  ///< null when there is no match
        Text stopped;   ///< how far the text had to be read
        Text lastAlive; ///< where the last character began to be read that all ways ended at; else as stopped
    };

    /// @param program must outlive the automaton
    MoDiffAutomaton(MoDiffProgram const& program, Direction direction,
                    std::size_t stateLimit = MoDiffStateTable::kMostStates);

    /// Matches at text, which is known to begin with the program's head, and nowhere else.
    Outcome matchAt(Text text, Text end) {
        Row const head = m_table.head();
        text += m_table.headLength();
        // Most candidates fail at the first character behind the head.
        if (text < end && Table::isDead(m_table.transition(head, *text)))
            return {m_table.state(head).isMatch ? text : nullptr, text + 1, text};
        if (m_table.state(head).accelerator == Table::kNotTried)
            acceleratorOf(head); // where most text is read, even if it is left and entered again and again
        return run(head, text, end);
    }

    /// See MoDiffPersistence; found out when it is first asked for.
    bool isPersistent();

    /// Searches for the leftmost match from text on. Without one, stops early where no match can have begun before.
    /// @param previousIsWord whether text follows a character of words; false where word boundaries don't matter
    Outcome search(Text text, Text end, bool previousIsWord);

    /// Reads backwards from a match's end; returns the leftmost start not before limit that isStart accepts, or null.
    /// @param end where the whole text ends
    template<typename IsStart>
    Text matchBackwards(Text limit, Text matchEnd, Text end, IsStart isStart);

private:
    using Table = MoDiffStateTable;
    using Row = Table::Row;
    using Transition = Table::Transition;
    enum class Answer { eUnknown, eNo, eYes };

    Outcome run(Row row, Text text, Text end);
    Transition read(Row row, Text& text, Text end);
    Text passOver(Row row, Text text, Text end, Text& tryFrom);
    MoDiffCandidateScanner const* acceleratorOf(Row row);

    Table m_table;
    MoDiffExits m_exits;
    MoDiffPersistence m_persistence;
    Answer m_isPersistent = Answer::eUnknown;
};

template<typename IsStart>
MoDiffAutomaton::Text MoDiffAutomaton::matchBackwards(Text limit, Text matchEnd, Text end, IsStart isStart) {
    MoDiffAlphabet const& alphabet = m_table.alphabet();
    Text leftmost = nullptr;
    Row row = m_table.start(false, false);
    for (Text text = matchEnd; text > limit;) {
        Transition const next = m_table.transition(row, text[-1]);
        if (!Table::isNoticed(next)) {
            row = next;
            --text;
            continue;
        }
        MoDiffAlphabet::Symbol const symbol = alphabet.symbolBefore(limit, text, end);
        row = m_table.step(row, symbol.symbolClass);
        text -= symbol.length;
        Table::State const& state = m_table.state(row);
        if (state.isMatch && isStart(text))
            leftmost = text;
        if (state.isLast)
            break;
    }
    return leftmost;
}

#endif
