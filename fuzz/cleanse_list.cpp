// A list of patterns must delete what its patterns delete one by one. Input: two bytes that choose the list, the
// text.

#include "MoCatalogue.h"
#include "MoDiffLib.h"
#include "MoFuzz.h"

namespace {

std::size_t const kLongestText = 4000;

/// Patterns in the catalogue's order, from a place on, some left out; enough of them to share a pass.
MoDiffLib::Patterns choose(std::size_t first, std::size_t step) {
    auto const& rows = MoCatalogue::rows();
    MoDiffLib::Patterns patterns;
    for (std::size_t i = 0; i < rows.size(); i += 1 + step % 3)
        patterns.push_back(&rows[(first + i) % rows.size()].getter());
    return patterns;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size < 2)
        return 0;
    MoFuzzInput input(data + 2, size - 2);
    std::string const text = input.until('\0').substr(0, kLongestText);
    MoDiffLib::Patterns const patterns = choose(data[0], data[1]);
    auto const together = moFuzzBuffer(text);
    auto const apart = moFuzzBuffer(text);
    char nothing[] = "";
    MoDiffLib::cleanse(together.get(), nothing, patterns);
    MoDiffLib::cleanse(apart.get(), nothing, {});
    for (MoDiffNormalizationPattern const* const pattern : patterns)
        MoDiffLib::cleanse(apart.get(), nothing, {pattern});
    MO_FUZZ_REQUIRE(std::strcmp(together.get(), apart.get()) == 0);
    return 0;
}
