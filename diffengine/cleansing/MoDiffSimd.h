#ifndef MO_DIFF_SIMD_H
#define MO_DIFF_SIMD_H

#include <cstddef>
#include <cstdint>
#ifdef __SSE2__
#define MO_DIFF_HAS_SIMD
#include <emmintrin.h>
#endif

/// The vector instructions that cleansing uses. Where there are none, MO_DIFF_HAS_SIMD is not defined and bytes are
/// tested one by one.
namespace MoDiffSimd {

std::size_t constexpr kBlock = 16;        ///< bytes that one instruction takes
std::size_t constexpr kSpan = 2 * kBlock; ///< bytes whose tests fill a 32-bit word, a bit each

#ifdef MO_DIFF_HAS_SIMD

using Block = __m128i;

inline Block load(unsigned char const* bytes) {
    return _mm_loadu_si128(reinterpret_cast<Block const*>(bytes));
}

inline void store(Block block, unsigned char* bytes) {
    _mm_storeu_si128(reinterpret_cast<Block*>(bytes), block);
}

inline Block repeat(unsigned char byte) {
    return _mm_set1_epi8(static_cast<char>(byte));
}

/// All bits of a byte are set where the two are equal.
inline Block equal(Block one, Block other) {
    return _mm_cmpeq_epi8(one, other);
}

/// All bits of a byte are set where it lies in [first, first + width].
inline Block inRange(Block bytes, Block first, Block width) {
    Block const distance = _mm_sub_epi8(bytes, first);
    return _mm_cmpeq_epi8(_mm_min_epu8(distance, width), distance);
}

inline Block both(Block one, Block other) {
    return _mm_and_si128(one, other);
}

inline Block either(Block one, Block other) {
    return _mm_or_si128(one, other);
}

inline Block nothing() {
    return _mm_setzero_si128();
}

/// A bit for each byte of two tests' results, the first byte's lowest.
inline std::uint32_t bits(Block low, Block high) {
    return static_cast<std::uint32_t>(_mm_movemask_epi8(low)) | static_cast<std::uint32_t>(_mm_movemask_epi8(high))
                                                                    << kBlock;
}

inline bool isAny(Block test) {
    return _mm_movemask_epi8(test) != 0;
}

#endif

} // namespace MoDiffSimd

#endif
