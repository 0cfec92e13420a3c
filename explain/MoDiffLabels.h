#ifndef MO_DIFF_LABELS_H
#define MO_DIFF_LABELS_H

#include "MoDiffHunks.h"

#include <string>
#include <string_view>
#include <vector>

/// What can be said of a difference as a whole.
struct MoDiffLabel {
    enum Kind {
        eNumbers,   ///< only numbers differ
        eBlanks,    ///< only blanks and line ends differ
        eCase,      ///< only upper and lower case differ
        eOrder,     ///< the lines are the same in another order
        eEncoding,  ///< the characters are the same, but not their bytes
        eBeginning, ///< one text is the beginning of the other one
        eMore,      ///< one block is more in the actual
        eLess       ///< one block is less in the actual
    };
    Kind kind;
    std::string words; ///< for people, without a full stop: "only numbers differ, by up to 15 %"
};

namespace MoDiffLabels {

/// The labels that apply to texts that differ, by the texts alone.
std::vector<MoDiffLabel> ofTexts(MoDiffBothSides<std::string_view> const& texts);

/// Adds those that depend on the files; all are in the order of their kinds then.
/// @param changes of the texts, at least one
void addOfFiles(MoDiffBothSides<MoDiffSourceText> const& sources, std::vector<MoDiffPlacedChange> const& changes,
                std::vector<MoDiffLabel>& labels);

} // namespace MoDiffLabels

#endif
