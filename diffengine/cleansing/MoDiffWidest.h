#ifndef MO_DIFF_WIDEST_H
#define MO_DIFF_WIDEST_H

#include <cstddef>
#include <cstdint>

/// Passes through texts by blocks of 64 bytes, with instructions that only some processors have: whoever calls asks
/// isThere() first. Nothing but this is compiled for them, so that all else runs everywhere.
namespace MoDiffWidest {

using Byte = unsigned char;

std::size_t constexpr kBlock = 64; ///< bytes

/// False, too, when the environment has MODIFF_NO_WIDEST: so that what other processors do is tested everywhere.
bool isThere();

/// Moves together what is not a given byte, in place, as far as whole blocks go.
/// @param read    what is to be moved; leads behind it in the end
/// @param written where it belongs, not behind read; leads behind what has been written in the end
void deleteByte(Byte const*& read, Byte const* end, Byte*& written, Byte byte);

/// By a character (ASCII) in which buckets it is: a bit each.
using Buckets = std::uint8_t[128];

/// Finds the next block in which a character and its neighbour share a bucket of theirs, as far as whole blocks, and
/// a byte behind them, go.
/// @param text where to begin; in the end the block, or how far there is none
/// @return the places of the first characters in the block, a bit each; 0 when there is none
std::uint64_t findPairs(Byte const*& text, Byte const* end, Buckets const& first, Buckets const& second);

} // namespace MoDiffWidest

#endif
