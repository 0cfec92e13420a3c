#ifndef MO_DIFF_TEXT_DIFF_H
#define MO_DIFF_TEXT_DIFF_H

#include "MoDiffChange.h"
#include "MoDiffSplitter.h"

#include <cstdint>
#include <string_view>
#include <vector>

/// Finds what to change in one text to get the other one, as people would tell it.
///
/// Texts are compared by tokens, changes inside tags and fields then by words. Where that takes more work or memory
/// than allowed, lines are compared, then blocks of lines, and what differs in them is compared by tokens as far as
/// the limits permit; changes that stay coarse say so by their grain. The same texts and limits always give the same
/// changes.
namespace MoDiffTextDiff {

struct Limits {
    std::uint64_t work = 250'000'000; ///< steps, some 2 ns each
    std::size_t memory = 0;           ///< bytes of tables; 0: a twelfth of both texts, at least 4 MiB
};

/// The changes in order; between two of them both texts are the same byte for byte. None when the texts are equal.
/// Texts of 4 GiB and more are not taken apart.
std::vector<MoDiffChange> find(std::string_view master, std::string_view actual, MoDiffSplitter const& splitter,
                               Limits limits = {});

} // namespace MoDiffTextDiff

#endif
