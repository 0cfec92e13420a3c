#include "MoDiffSequenceDiff.h"

#include <algorithm>
#include <cmath>

namespace {

// A search that makes this many edits gives up. It costs about the square of the number, so the bound falls with the
// root of the work that is left. A diff that has to come to an end goes over to the work that is left for each
// element once half of it is done.
std::ptrdiff_t const kLeastEdits = 16;
std::ptrdiff_t const kMostEdits = 4096;
double const kShareOfRoot = 6;

std::ptrdiff_t const kUnreached = -1;

} // namespace

MoDiffSequenceDiff::MoDiffSequenceDiff(Sequence const& first, Sequence const& second)
    : m_first(first), m_second(second), m_deleted(first.size()), m_inserted(second.size()) {
}

bool MoDiffSequenceDiff::run(std::uint64_t& work, Persistence persistence) {
    m_work = work;
    m_workForRoot = persistence == eFinish ? work / 2 : 0;
    m_rest = m_first.size() + m_second.size();
    std::vector<Box> boxes{{0, static_cast<Index>(m_first.size()), 0, static_cast<Index>(m_second.size())}};
    while (!boxes.empty() && (m_work != 0 || persistence == eFinish)) {
        Box box = boxes.back();
        boxes.pop_back();
        trim(box);
        if (box.width() == 0 || box.height() == 0) {
            takeWhole(box);
            continue;
        }
        Point const split = middle(box);
        Box const before = {box.left, box.left + split.column, box.top, box.top + split.row};
        Box const behind = {before.right, box.right, before.bottom, box.bottom};
        bool const smallBefore = before.width() + before.height() < behind.width() + behind.height();
        boxes.push_back(smallBefore ? behind : before); // the larger one waits, so that few do
        boxes.push_back(smallBefore ? before : behind);
    }
    work = m_work;
    return boxes.empty();
}

void MoDiffSequenceDiff::trim(Box& box) {
    Index const width = box.width();
    while (box.left < box.right && box.top < box.bottom && isEqual<false>(box, 0, 0)) {
        ++box.left;
        ++box.top;
    }
    while (box.left < box.right && box.top < box.bottom && isEqual<true>(box, 0, 0)) {
        --box.right;
        --box.bottom;
    }
    m_rest -= static_cast<std::size_t>(2 * (width - box.width()));
}

void MoDiffSequenceDiff::takeWhole(Box const& box) {
    m_rest -= static_cast<std::size_t>(box.width() + box.height());
    std::fill(m_deleted.begin() + box.left, m_deleted.begin() + box.right, true);
    std::fill(m_inserted.begin() + box.top, m_inserted.begin() + box.bottom, true);
}

template<bool kBackward>
bool MoDiffSequenceDiff::isEqual(Box const& box, Index column, Index row) const {
    Index const first = kBackward ? box.right - 1 - column : box.left + column;
    Index const second = kBackward ? box.bottom - 1 - row : box.top + row;
    return m_first[static_cast<std::size_t>(first)] == m_second[static_cast<std::size_t>(second)];
}

MoDiffSequenceDiff::Index MoDiffSequenceDiff::mostEdits(Box const& box) const {
    double const work = static_cast<double>(m_work);
    double const bound =
        m_work >= m_workForRoot ? std::sqrt(work) / kShareOfRoot : work / static_cast<double>(m_rest);
    return std::min(std::clamp(static_cast<Index>(bound), kLeastEdits, kMostEdits),
                    (box.width() + box.height() + 1) / 2 + 1);
}

void MoDiffSequenceDiff::spend(Index steps) {
    m_work -= std::min(m_work, static_cast<std::uint64_t>(steps));
}

void MoDiffSequenceDiff::Frontier::start(Index mostEdits) {
    lowest = highest = edits = 0;
    zero = mostEdits + 1;
    columns.assign(static_cast<std::size_t>(2 * zero + 1), kUnreached);
    on(1) = 0; // diagonal 0 is entered from here
}

bool MoDiffSequenceDiff::Frontier::holds(Index diagonal) const {
    // Each edit changes between even and odd diagonals; `edits` is the number of the next one.
    return edits > 0 && diagonal >= lowest && diagonal <= highest && (diagonal - edits) % 2 != 0;
}

/// Where one edit more comes in on a diagonal, from one of its neighbours; kUnreached outside the box.
MoDiffSequenceDiff::Index MoDiffSequenceDiff::Frontier::entry(Box const& box, Index diagonal) {
    Index const down = on(diagonal + 1);
    Index const right = on(diagonal - 1) == kUnreached ? kUnreached : on(diagonal - 1) + 1;
    return std::max(down - diagonal > box.height() ? kUnreached : down, right > box.width() ? kUnreached : right);
}

/// Takes one edit more on every diagonal. INVARIANT: the neighbours of a diagonal hold the points of one edit less.
/// Returns true when the searches meet.
template<bool kBackward>
bool MoDiffSequenceDiff::advance(Box const& box, Frontier& own, Frontier& other, Point& meeting) {
    // Diagonals that leave the box are left out: -height to width.
    own.lowest = own.edits <= box.height() ? -own.edits : own.lowest + 1;
    own.highest = own.edits <= box.width() ? own.edits : own.highest - 1;
    spend(own.highest - own.lowest + 1);
    for (Index diagonal = own.lowest; diagonal <= own.highest; diagonal += 2) {
        Index column = own.entry(box, diagonal);
        Index const start = column;
        while (column != kUnreached && column < box.width() && column - diagonal < box.height() &&
               isEqual<kBackward>(box, column, column - diagonal))
            ++column;
        spend(column - start);
        own.on(diagonal) = column;
        if (column == kUnreached)
            continue;
        Index const opposite = box.width() - box.height() - diagonal;
        if (other.holds(opposite) && other.on(opposite) != kUnreached && column + other.on(opposite) >= box.width()) {
            meeting = kBackward ? Point{box.width() - column, box.height() - (column - diagonal)}
                                : Point{column, column - diagonal};
            return true;
        }
    }
    ++own.edits;
    return false;
}

MoDiffSequenceDiff::Point MoDiffSequenceDiff::Frontier::furthest() {
    Point best = {0, 0};
    for (Index diagonal = lowest; diagonal <= highest; diagonal += 2) {
        Index const column = on(diagonal);
        Index const row = column - diagonal;
        if (column != kUnreached && column + row > best.column + best.row)
            best = {column, row};
    }
    return best;
}

/// A point that is neither corner of a box whose corners are no matches.
MoDiffSequenceDiff::Point MoDiffSequenceDiff::middle(Box const& box) {
    Index const most = mostEdits(box);
    m_forward.start(most);
    m_backward.start(most);
    Point meeting = {0, 0};
    for (Index edits = 0; edits < most; ++edits)
        if (advance<false>(box, m_forward, m_backward, meeting) || advance<true>(box, m_backward, m_forward, meeting))
            return meeting;
    Point const forward = m_forward.furthest();
    Point const backward = m_backward.furthest();
    if (forward.column + forward.row >= backward.column + backward.row)
        return forward;
    return {box.width() - backward.column, box.height() - backward.row};
}
