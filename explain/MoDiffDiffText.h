#ifndef MO_DIFF_DIFF_TEXT_H
#define MO_DIFF_DIFF_TEXT_H

#include "MoDiffPairExplanation.h"
#include "MoDiffStyledLine.h"

#include <functional>

/// An explanation as lines to be read, one below the other or side by side.
namespace MoDiffDiffText {

/// Takes the lines in their order.
using Sink = std::function<void(MoDiffStyledLine const&)>;

struct Options {
    bool sideBySide = false;
    std::size_t width = 160;    ///< columns of both sides together
    bool brackets = false;      ///< marks between [- -] and {+ +}, where there are no colours
    std::size_t mostLines = 40; ///< of a side in a row; what is more is counted
    std::size_t mostHunks = 200;
};

/// Writes labels, notes and hunks; for bytes and scripts what there is instead of hunks.
void write(MoDiffPairExplanation const& explanation, Options const& options, Sink const& sink);

} // namespace MoDiffDiffText

#endif
