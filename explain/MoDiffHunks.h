#ifndef MO_DIFF_HUNKS_H
#define MO_DIFF_HUNKS_H

#include "MoDiffChange.h"
#include "MoDiffSourceText.h"

#include <vector>

/// A change with its places in the files.
struct MoDiffPlacedChange {
    MoDiffChange change;
    /// In the files, from its first byte to behind its last one; what is hidden in between belongs to it. An empty
    /// one stands between lines when the other side's is whole lines, in front of the byte behind it when the other
    /// side's begins its line, otherwise behind the byte before it.
    MoDiffBothSides<MoDiffRange> file;
    MoDiffBothSides<MoDiffPlace> place; ///< of the begin
};

/// Neighbouring lines of both files that hold changes.
struct MoDiffSegment {
    std::size_t firstChange;
    std::size_t endChange;
    /// Whole lines of the files. Empty on a side where whole lines of the other one are not.
    MoDiffBothSides<MoDiffRange> lines;
    MoDiffBothSides<std::size_t> firstLine; ///< the number of the first of them, from 1
};

/// Segments close to each other, with unchanged lines around them. Between two segments lie unchanged lines, too.
struct MoDiffHunk {
    std::vector<MoDiffSegment> segments; ///< at least one
    MoDiffBothSides<MoDiffRange> before; ///< whole lines of the files
    MoDiffBothSides<MoDiffRange> after;
};

namespace MoDiffHunks {

/// The changes with their places.
/// @param changes of the texts, in order
std::vector<MoDiffPlacedChange> place(MoDiffBothSides<MoDiffSourceText> const& sources,
                                      std::vector<MoDiffChange> const& changes);

/// The hunks in order.
/// @param contextLines how many unchanged lines around them
std::vector<MoDiffHunk> find(MoDiffBothSides<MoDiffSourceText> const& sources,
                             std::vector<MoDiffPlacedChange> const& changes, std::size_t contextLines);

} // namespace MoDiffHunks

#endif
