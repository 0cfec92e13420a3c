#ifndef MO_DIFF_SIMD_H
#define MO_DIFF_SIMD_H

#include <array>
#include <cstddef>
#include <cstdint>
#if defined(__AVX2__)
#define MO_DIFF_HAS_SIMD
#define MO_DIFF_HAS_LOOKUP
#include <immintrin.h>
#elif defined(__SSE2__)
#define MO_DIFF_HAS_SIMD
#include <emmintrin.h>
#endif

/// The vector instructions that cleansing uses, on spans of bytes whose tests fill a 32-bit word, a bit each: one
/// instruction a span where the processor has such, two else. Where there are none, MO_DIFF_HAS_SIMD is not defined
/// and bytes are tested one by one.
namespace MoDiffSimd {

std::size_t constexpr kSpan = 32; ///< bytes

/// The place of each byte in a span.
alignas(kSpan) std::array<unsigned char, kSpan> constexpr kPlaces = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10,
                                                                     11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
                                                                     22, 23, 24, 25, 26, 27, 28, 29, 30, 31};

#if defined(__AVX2__)

inline namespace Wide { // sources for either kind of processor may be linked together

bool constexpr kIsSpanOneInstruction = true;

using Span = __m256i;

inline Span load(unsigned char const* bytes) {
    return _mm256_loadu_si256(reinterpret_cast<Span const*>(bytes));
}

inline void store(Span span, unsigned char* bytes) {
    _mm256_storeu_si256(reinterpret_cast<Span*>(bytes), span);
}

inline Span repeat(unsigned char byte) {
    return _mm256_set1_epi8(static_cast<char>(byte));
}

inline Span nothing() {
    return _mm256_setzero_si256();
}

/// All bits of a byte are set where the two are equal.
inline Span equal(Span one, Span other) {
    return _mm256_cmpeq_epi8(one, other);
}

/// All bits of a byte are set where it lies in [first, first + width].
inline Span inRange(Span bytes, Span first, Span width) {
    Span const distance = _mm256_sub_epi8(bytes, first);
    return _mm256_cmpeq_epi8(_mm256_min_epu8(distance, width), distance);
}

inline Span both(Span one, Span other) {
    return _mm256_and_si256(one, other);
}

inline Span either(Span one, Span other) {
    return _mm256_or_si256(one, other);
}

/// The first bytes of one span, up to count of them, and what stands behind them in another.
inline Span join(Span one, unsigned count, Span other) {
    Span const places = load(kPlaces.data());
    return _mm256_blendv_epi8(other, one, _mm256_cmpgt_epi8(repeat(static_cast<unsigned char>(count)), places));
}

/// A bit for each byte of a test's result, the first byte's lowest.
inline std::uint32_t bits(Span test) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(test));
}

inline bool isAny(Span test) {
    return bits(test) != 0;
}

inline bool isAll(Span test) {
    return ~bits(test) == 0;
}

/// A table of 16 entries for lookUpHalves().
inline Span loadTable(std::uint8_t const* table) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<__m128i const*>(table)));
}

/// For each byte, what its lower half finds in one table and its higher half in another, as far as both have it.
inline Span lookUpHalves(Span low, Span high, Span bytes) {
    Span const half = repeat(15);
    Span const lowHalves = _mm256_and_si256(bytes, half);
    Span const highHalves = _mm256_and_si256(_mm256_srli_epi16(bytes, 4), half);
    return _mm256_and_si256(_mm256_shuffle_epi8(low, lowHalves), _mm256_shuffle_epi8(high, highHalves));
}

} // namespace Wide

#elif defined(__SSE2__)

inline namespace Narrow {

bool constexpr kIsSpanOneInstruction = false;

struct Span {
    __m128i low;
    __m128i high;
};

std::size_t constexpr kHalf = kSpan / 2;

inline Span load(unsigned char const* bytes) {
    return {_mm_loadu_si128(reinterpret_cast<__m128i const*>(bytes)),
            _mm_loadu_si128(reinterpret_cast<__m128i const*>(bytes + kHalf))};
}

inline void store(Span span, unsigned char* bytes) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), span.low);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes + kHalf), span.high);
}

inline Span repeat(unsigned char byte) {
    __m128i const half = _mm_set1_epi8(static_cast<char>(byte));
    return {half, half};
}

inline Span nothing() {
    return {_mm_setzero_si128(), _mm_setzero_si128()};
}

inline Span equal(Span one, Span other) {
    return {_mm_cmpeq_epi8(one.low, other.low), _mm_cmpeq_epi8(one.high, other.high)};
}

inline Span inRange(Span bytes, Span first, Span width) {
    __m128i const low = _mm_sub_epi8(bytes.low, first.low);
    __m128i const high = _mm_sub_epi8(bytes.high, first.high);
    return equal({_mm_min_epu8(low, width.low), _mm_min_epu8(high, width.high)}, {low, high});
}

inline Span both(Span one, Span other) {
    return {_mm_and_si128(one.low, other.low), _mm_and_si128(one.high, other.high)};
}

inline Span either(Span one, Span other) {
    return {_mm_or_si128(one.low, other.low), _mm_or_si128(one.high, other.high)};
}

inline Span join(Span one, unsigned count, Span other) {
    __m128i const places = load(kPlaces.data()).low; // of the lower half
    __m128i const ends = repeat(static_cast<unsigned char>(count)).low;
    __m128i const isLow = _mm_cmpgt_epi8(ends, places);
    __m128i const isHigh = _mm_cmpgt_epi8(ends, _mm_add_epi8(places, _mm_set1_epi8(kHalf)));
    return {_mm_or_si128(_mm_and_si128(isLow, one.low), _mm_andnot_si128(isLow, other.low)),
            _mm_or_si128(_mm_and_si128(isHigh, one.high), _mm_andnot_si128(isHigh, other.high))};
}

inline std::uint32_t bits(Span test) {
    return static_cast<std::uint32_t>(_mm_movemask_epi8(test.low)) |
           static_cast<std::uint32_t>(_mm_movemask_epi8(test.high)) << kHalf;
}

inline bool isAny(Span test) {
    return _mm_movemask_epi8(_mm_or_si128(test.low, test.high)) != 0;
}

} // namespace Narrow

#endif

} // namespace MoDiffSimd

#endif
