#ifndef MO_DIFF_HEX_TEXT_H
#define MO_DIFF_HEX_TEXT_H

#include "MoDiffHunks.h"
#include "MoDiffStyledLine.h"

#include <functional>
#include <string_view>
#include <vector>

/// Bytes that differ, in rows of 16 by their offset.
namespace MoDiffHexText {

/// The rows that hold changes, those of the master above those of the actual.
/// @param mostRows what is more is counted
void write(MoDiffBothSides<std::string_view> const& files, std::vector<MoDiffPlacedChange> const& changes,
           std::size_t mostRows, std::function<void(MoDiffStyledLine const&)> const& sink);

} // namespace MoDiffHexText

#endif
