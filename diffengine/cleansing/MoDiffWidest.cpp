#include "MoDiffWidest.h"

#if defined(__AVX512BW__) && defined(__AVX512VBMI__) && defined(__AVX512VBMI2__)

#include <immintrin.h>
#include <stdlib.h>

bool MoDiffWidest::isThere() {
    static bool const isIt = !getenv("MODIFF_NO_WIDEST") && __builtin_cpu_supports("avx512bw") &&
                             __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2");
    return isIt;
}

void MoDiffWidest::deleteByte(Byte const*& read, Byte const* end, Byte*& written, Byte byte) {
    __m512i const deleted = _mm512_set1_epi8(static_cast<char>(byte));
    for (; static_cast<std::size_t>(end - read) >= kBlock; read += kBlock) {
        __m512i const block = _mm512_loadu_si512(read);
        __mmask64 const kept = _mm512_cmpneq_epi8_mask(block, deleted);
        _mm512_storeu_si512(written, _mm512_maskz_compress_epi8(kept, block));
        written += __builtin_popcountll(kept);
    }
}

std::uint64_t MoDiffWidest::findPairs(Byte const*& text, Byte const* end, Buckets const& first,
                                      Buckets const& second) {
    __m512i const firstLow = _mm512_loadu_si512(first);
    __m512i const firstHigh = _mm512_loadu_si512(first + kBlock);
    __m512i const secondLow = _mm512_loadu_si512(second);
    __m512i const secondHigh = _mm512_loadu_si512(second + kBlock);
    for (; static_cast<std::size_t>(end - text) > kBlock; text += kBlock) {
        __m512i const bytes = _mm512_loadu_si512(text);
        __m512i const neighbours = _mm512_loadu_si512(text + 1);
        __m512i const one = _mm512_permutex2var_epi8(firstLow, bytes, firstHigh); // by the lower seven bits
        __m512i const other = _mm512_permutex2var_epi8(secondLow, neighbours, secondHigh);
        std::uint64_t const hits = _mm512_test_epi8_mask(one, other);
        if (hits == 0)
            continue;
        if (std::uint64_t const inAscii = hits & ~_mm512_movepi8_mask(bytes))
            return inAscii;
    }
    return 0;
}

#else

bool MoDiffWidest::isThere() {
    return false;
}

void MoDiffWidest::deleteByte(Byte const*&, Byte const*, Byte*&, Byte) {
}

std::uint64_t MoDiffWidest::findPairs(Byte const*&, Byte const*, Buckets const&, Buckets const&) {
    return 0;
}

#endif
