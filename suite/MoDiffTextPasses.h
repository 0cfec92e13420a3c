#ifndef MO_DIFF_TEXT_PASSES_H
#define MO_DIFF_TEXT_PASSES_H

#include <cstddef>

/// What is found out of each text by going through all of its bytes, with the widest vectors that the processor has.
/// The source is compiled for either kind of them; the functions may be used by several threads at once.
struct MoDiffTextPasses {
    static std::size_t constexpr kHashLength = 16;

    /// XXH3 of 128 bits, as it is written.
    void (*hash)(char const* text, std::size_t length, unsigned char* digest);

    /// The first byte from a place on that is NUL or beyond ASCII, or the text's length.
    std::size_t (*findUnusual)(char const* text, std::size_t length, std::size_t from);

    /// The best ones for this processor.
    static MoDiffTextPasses const& best();
};

extern MoDiffTextPasses const kMoDiffTextPasses;
extern MoDiffTextPasses const kMoDiffWideTextPasses; ///< where MODIFF_HAS_WIDE_PASSES is defined

#endif
