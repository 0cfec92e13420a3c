#ifndef MO_DIFF_EXITS_H
#define MO_DIFF_EXITS_H

#include "MoDiffStateTable.h"

#include <cstdint>

/// How a state of a DFA is left, so that text which leaves it as it is can be passed over many bytes at a time: by
/// one of the loners, bytes that count whatever follows; or by the way, the sets of characters that lead away one
/// after another.
///
/// Where text follows the way for a while only, reading goes on as if it had never left the state; so nothing is lost
/// by looking for the whole way at once.
class MoDiffExits {
public:
    MoDiffExits() { m_way.reserve(MoDiffProgram::kLongestPrefix); }

    /// Derives the exits of a state without a flush of the table, allocating nothing. Returns false when the states
    /// that this takes have no room.
    bool derive(MoDiffStateTable& table, MoDiffStateTable::Row state);

    /// Empty when there are loners only.
    MoDiffProgram::Prefix const& way() const { return m_way; }
    MoDiffCandidateScanner::Bytes const& loners() const { return m_loners; }

private:
    using Row = MoDiffStateTable::Row;

    static bool hasRoom(MoDiffStateTable const& table) { return table.hasRoomFor(std::size_t{2} * table.width()); }
    void divide(MoDiffStateTable& table, Row state);
    void followWay(MoDiffStateTable& table, Row state);
    std::uint64_t leaveWay(MoDiffStateTable& table, Row state);
    void listLoners(MoDiffAlphabet const& alphabet);

    std::uint64_t m_lonerClasses = 0;
    std::uint64_t m_firstClasses = 0; ///< that begin the way
    Row m_reached = 0;                ///< how far the way has been followed; the state itself when that can't be told
    MoDiffProgram::Prefix m_way;
    MoDiffCandidateScanner::Bytes m_loners;
};

#endif
