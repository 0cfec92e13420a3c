#ifndef MO_DIFF_STYLED_LINE_H
#define MO_DIFF_STYLED_LINE_H

#include <string>
#include <vector>

/// What a part of a shown line is; consoles and pages choose their colours by it.
enum class MoDiffStyle {
    eContext,     ///< the same on both sides
    eRemoved,     ///< a line of the master that changes
    eRemovedMark, ///< what changes in it
    eAdded,       ///< a line of the actual that changes
    eAddedMark,   ///< what changes in it
    eHidden,      ///< what cleansing deletes, so that it is not compared
    ePlace,       ///< where a hunk stands
    eLabel,       ///< what can be said of the whole difference
    eNote         ///< about what is shown: folded lines, cut ones
};

/// A part of a line, escaped: no control characters, valid UTF-8.
struct MoDiffSpan {
    MoDiffStyle style;
    std::string text;
    std::string
        folded{}; ///< what the text stands for, where it names a hidden stretch; the first bytes of a long one
};

using MoDiffStyledLine = std::vector<MoDiffSpan>;

#endif
