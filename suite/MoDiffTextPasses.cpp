#include "MoDiffTextPasses.h"

#include "MoDiffSimd.h"

#include <xxhash.h>

namespace {

void hash(char const* text, std::size_t length, unsigned char* digest) {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits(text, length));
    for (unsigned char const byte : canonical.digest)
        *digest++ = byte;
}

bool isUnusual(unsigned char byte) {
    return byte == 0 || byte >= 0x80;
}

std::size_t findUnusual(char const* text, std::size_t length, std::size_t from) {
    auto const* const bytes = reinterpret_cast<unsigned char const*>(text);
#ifdef MO_DIFF_HAS_SIMD
    using namespace MoDiffSimd;
    auto const unusual = [bytes](std::size_t at) { // the highest bit is set
        Span const span = load(bytes + at);
        return either(span, equal(span, nothing()));
    };
    while (length - from >= 2 * kSpan && !isAny(either(unusual(from), unusual(from + kSpan))))
        from += 2 * kSpan;
#endif
    while (from < length && !isUnusual(bytes[from]))
        ++from;
    return from;
}

} // namespace

#ifdef MO_DIFF_WIDE_PASSES

MoDiffTextPasses const kMoDiffWideTextPasses = {hash, findUnusual};

#else

MoDiffTextPasses const kMoDiffTextPasses = {hash, findUnusual};

MoDiffTextPasses const& MoDiffTextPasses::best() {
#ifdef MODIFF_HAS_WIDE_PASSES
    static bool const isWide = __builtin_cpu_supports("avx2");
    return isWide ? kMoDiffWideTextPasses : kMoDiffTextPasses;
#else
    return kMoDiffTextPasses;
#endif
}

#endif
