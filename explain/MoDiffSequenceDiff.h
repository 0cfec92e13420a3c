#ifndef MO_DIFF_SEQUENCE_DIFF_H
#define MO_DIFF_SEQUENCE_DIFF_H

#include <cstddef>
#include <cstdint>
#include <vector>

/// Finds which elements of two sequences to delete and to insert to turn one into the other, as few as the allowed
/// work permits.
///
/// The edit graph has a column for each element of the first sequence and a row for each of the second one; equal
/// elements make diagonal steps free. From both corners of a box, searches go forward that keep, for each number of
/// edits, the point furthest along each diagonal. Where they meet lies the middle of a shortest path, and the two
/// boxes before and behind it are solved likewise, so that memory is linear in the number of edits. When the searches
/// have cost too much, the furthest point reached so far is taken for the middle: paths get longer, not wrong.
class MoDiffSequenceDiff {
public:
    using Sequence = std::vector<std::uint32_t>;

    /// Both sequences must outlive the diff.
    MoDiffSequenceDiff(Sequence const& first, Sequence const& second);

    enum Persistence {
        eGiveUp, ///< when the work does not suffice
        eFinish  ///< by longer and longer paths; may take a little more than the work allowed
    };

    /// @param work how many steps the searches may take, the same on every machine; the steps taken are subtracted
    /// @return false when they did not suffice; nothing else may be asked then
    bool run(std::uint64_t& work, Persistence persistence);

    bool isDeleted(std::size_t index) const { return m_deleted[index]; }
    bool isInserted(std::size_t index) const { return m_inserted[index]; }

private:
    using Index = std::ptrdiff_t;

    struct Box {
        Index left, right; ///< elements of the first sequence
        Index top, bottom; ///< elements of the second sequence
        Index width() const { return right - left; }
        Index height() const { return bottom - top; }
    };
    struct Point {
        Index column, row;
    };
    /// How far a search has come on each diagonal (column - row), as seen from its own corner of the box.
    struct Frontier {
        Index lowest = 0;
        Index highest = 0;
        Index edits = 0;
        Index zero = 0; ///< where diagonal 0 is in `columns`
        std::vector<Index> columns;

        void start(Index mostEdits);
        Index& on(Index diagonal) { return columns[static_cast<std::size_t>(zero + diagonal)]; }
        bool holds(Index diagonal) const;
        Index entry(Box const& box, Index diagonal);
        Point furthest();
    };

    void trim(Box& box);
    void takeWhole(Box const& box);
    Point middle(Box const& box);
    template<bool kBackward>
    bool advance(Box const& box, Frontier& own, Frontier& other, Point& meeting);
    template<bool kBackward>
    bool isEqual(Box const& box, Index column, Index row) const;
    Index mostEdits(Box const& box) const;
    void spend(Index steps);

    Sequence const& m_first;
    Sequence const& m_second;
    std::vector<bool> m_deleted;
    std::vector<bool> m_inserted;
    Frontier m_forward;
    Frontier m_backward;
    std::uint64_t m_work = 0;
    std::uint64_t m_workForRoot = 0; ///< below it, what is left is shared out
    std::size_t m_rest = 0;          ///< elements not settled yet
};

#endif
