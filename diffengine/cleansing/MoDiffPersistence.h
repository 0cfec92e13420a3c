#ifndef MO_DIFF_PERSISTENCE_H
#define MO_DIFF_PERSISTENCE_H

#include "MoDiffStateTable.h"

#include <cstddef>
#include <vector>

/// Whether all ways that lead on from a DFA's head stay open until none does: every state that can be reached from
/// the head includes it. Then a match that failed from one place fails from every place behind it whose head ends
/// before the failure.
class MoDiffPersistence {
public:
    /// Takes the memory that holds() needs.
    explicit MoDiffPersistence(std::size_t stateLimit);

    /// Looks at the states without a flush of the table, allocating nothing. Returns false also when they have no
    /// room.
    bool holds(MoDiffStateTable& table);

private:
    using Row = MoDiffStateTable::Row;

    void see(std::size_t index, Row row);
    bool seeTargets(MoDiffStateTable& table, Row row);

    std::vector<bool> m_isSeen; ///< by state
    std::vector<Row> m_pending; ///< seen, but not looked at yet
};

#endif
