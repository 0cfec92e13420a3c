#ifndef MO_DIFF_CHANGE_H
#define MO_DIFF_CHANGE_H

#include "MoDiffPairResult.h"

#include <cstddef>
#include <string_view>

/// Bytes [begin, end) of a text.
struct MoDiffRange {
    std::size_t begin = 0;
    std::size_t end = 0;

    std::size_t size() const { return end - begin; }
    bool isEmpty() const { return begin == end; }
    std::string_view of(std::string_view text) const { return text.substr(begin, size()); }
};

/// How finely two texts are told apart.
enum class MoDiffGrain {
    eWords,  ///< also inside tags and fields
    eTokens, ///< tags, words, numbers, blanks, punctuation, line ends; fields of records
    eLines,  ///< lines and, in texts without line ends, what stands between tags; records
    eBlocks, ///< some lines together
    eWhole   ///< not at all: one text for the other
};

/// A part of one text that stands in the place of a part of the other one; one of them may be empty. The ranges are
/// those of the texts that were compared, which are the cleansed ones where a format is cleansed.
struct MoDiffChange {
    MoDiffBothSides<MoDiffRange> ranges;
    MoDiffGrain grain = MoDiffGrain::eTokens; ///< coarser than eTokens where the limits of the comparison were met
};

#endif
