// Each pattern on texts made to be slow for it, beside the same pattern on ordinary HTML (slow/NUMBER/ordinary). ICU
// would need minutes for most of them; it decides about the bytes of short texts of the same shape, RE2 about the
// long ones. The names are slow/NUMBER/SHAPE.

#include "MoBenchCatalogue.h"

#include <cstddef>
#include <string>

namespace {

std::size_t const kSize = 1000000;
std::size_t const kSizeForIcu = 500;

/// Head, a unit again and again, and tail.
struct Shape {
    unsigned pattern; ///< 0 for every pattern
    char const* name;
    char const* head;
    char const* unit;
    char const* tail;
    bool stays; ///< whether nothing is deleted
};

Shape const kShapes[] = {
    {0, "digits", "", "1", "", true},
    {0, "quotes", "", "\"", "", true},
    {0, "blanks", "", " ", "", true},
    {0, "angles", "", "<", "", true},
    {0, "letters", "", "n", "", true},
    {0, "soft-breaks", "", "=\n", "", false},
    {1, "unclosed", "", "<script ", "", true},
    {1, "half-closed", "", "<script></scrip", "", true},
    {1, "half-opened", "", "<scrip", "", true},
    {1, "nested", "", "<script ", "</script>", false},
    {1, "one-unclosed", "<script", "</scrip", "", true},
    {1, "half-closed-but-one", "", "<script></scrip", "</script>", false},
    {2, "unclosed", "", " name=\"chart\n", "", true},
    {2, "half-opened", "", " name=\"char", "", true},
    {2, "inside-word", "", "xname=\"chart\" ", "", true},
    {2, "one-unclosed", " name=\"chart", "a", "", true},
    {3, "half", "", " name=\"next\"", "", true},
    {3, "half-second", "", " name=\"next\" id=\"nex", "", true},
    {3, "unclosed", "", " name=\"next\" id=\"next\n", "", true},
    {3, "nested", "", " name=\"next", "\" id=\"next\"", false},
    {4, "unclosed", "", "<meta name=\"Copyright\" ", "", true},
    {4, "half-opened", "", "<meta name=\"Copyright", "", true},
    {4, "nested", "", "<meta name=\"Copyright\" ", ">", false},
    {5, "unclosed", "", "<meta name=\"Trademark\" ", "", true},
    {5, "half-opened", "", "<meta name=\"Trademark", "", true},
    {5, "nested", "", "<meta name=\"Trademark\" ", ">", false},
    {6, "unclosed", "", " onclick=\"\n", "", true},
    {6, "half-opened", "", "oncontextmenu=", "", true},
    {6, "ons", "", "on", "", true},
    {6, "one-unclosed", "onload=\"", "a", "", true},
    {7, "unclosed", "", "<img src=", "", true},
    {7, "half-closed", "", "<img src=/bin", "", true},
    {7, "nested", "", "<img src=", "bin/", false},
    {7, "unclosed-but-one", "", "<img src=", "\n<img src=bin/", false},
    {7, "half-closed-but-one", "", "<img src=/bin", "\n<img src=bin/", false},
    {8, "unclosed", "", " ctx=\"12:", "", true},
    {8, "one-unclosed", " ctx=\"", "1", "", true},
    {9, "unclosed", "", " name=\"a", "", true},
    {9, "one-unclosed", " name=\"", "a", "", true},
    {9, "blanks-after", " name=\"a\"", " ", "", false},
    {10, "unclosed", "", " id=\"PRMT_a", "", true},
    {10, "one-unclosed", " id=\"PRMT_", "a", "", true},
    {10, "half-opened", "", " id=\"PRMT", "", true},
    {11, "unclosed", "", " id=\"a", "", true},
    {11, "one-unclosed", " id=\"", "a", "", true},
    {12, "without-digits", "", "chart_tmp_", "", true},
    {12, "half-opened", "", "chart_tmp", "", true},
    {12, "one-long", "chart_tmp_", "1", "", false},
    {13, "one-long", "c", "1", "", true},
    {13, "without-end", "", "c1", "", true},
    {13, "half-closed", "", "c1.removeReferenc", "", true},
    {14, "unclosed", "", " coords=\"\n", "", true},
    {14, "half-opened", "", " coords=", "", true},
    {14, "one-unclosed", " coords=\"", "1,", "", true},
    {15, "unclosed", "", "<coord>", "", true},
    {15, "half-closed", "", "<coord></coord", "", true},
    {15, "nested", "", "<coord>", "</coord>", false},
    {15, "half-closed-but-one", "", "<coord></coord", "\n<coord></coord>", false},
    {16, "breaks-behind-n", "n", "=\n", "", true},
    {16, "breaks-between-n", "", "n=\n", "", true},
    {16, "breaks-behind-chart", "name=3D\"chart", "=\n", "", true},
    {16, "half-opened", "", " name=3D\"char=\n", "", true},
    {16, "nested", "", "na=\nme=\n ", "=3D\"chart\"", true},
    {17, "half-closed", "", "/bin ", "", true},
    {17, "slashes", "", "/", "", true},
    {17, "touching", "", "/bind/", "", false},
    {18, "unclosed", "", "<x:Data>", "", true},
    {18, "half-closed", "", "<x:Data></x:Data", "", true},
    {18, "nested", "", "<x:Data>", "</x:Data>", false},
    {19, "points", "", "1.", "", true},
    {19, "signs", "", "+", "", true},
    {19, "half-exponents", "", "1e", "", true},
    {19, "touching", "", "1e+", "", false},
    {19, "half-exponent-behind-digits", "", "1111111111.11111111111e", "", true},
    {19, "one-long", "", "1", "e+1", false},
    {20, "points", "", ".", "", true},
    {20, "signs", "", "-", "", true},
    {20, "exponents", "", "1e+", "", true},
    {20, "touching", "", "1.1e+", "", false},
    {20, "one-long", "", "1", ".1", false},
    {21, "quoted", "", "\"a\", ", "", true},
    {21, "without-digits", "", "\"chart_tmp_", "", true},
    {21, "unclosed", "", "\"chart_tmp_1 ", "", true},
    {21, "nested", "", "\"a", "chart_tmp_1\"", false},
    {21, "without-digits-but-one", "", "\"chart_tmp_", "\n\"chart_tmp_1\"", false},
    {22, "half-closed-but-one", "", "<area></area", "\n<area></area>", false},
    {22, "unclosed", "", "<area>", "", true},
    {22, "half-closed", "", "<area></area", "", true},
    {22, "half-opened", "", "<area ", "", true},
    {22, "nested", "", "<area>", "</area>", false},
    {23, "unclosed", "", "<area ", "", true},
    {23, "unclosed-lines", "", "<area\n", "", true},
    {23, "nested", "", "<area ", ">", false},
    {24, "half-opened", "", "Content-Type: image/pn", "", true},
    {24, "one-long", "Content-Type: image/png", "a", "", false},
    {24, "touching", "", "Content-Type: image/png\n", "", false},
    {25, "feeds", "", "\n", "", false},
    {25, "every-second", "", "a\n", "", false},
    {26, "equals", "", "=", "", true},
    {26, "every-second", "", "==\n", "", false},
    {27, "one-long", "width:", "1", "", true},
    {27, "unclosed", "", "width:1a", "", true},
    {27, "one-long-unit", "width:1", "a", "", true},
};

std::string makeText(Shape const& shape, std::size_t size) {
    std::string text = shape.head;
    while (text.size() < size)
        text += shape.unit;
    return text + shape.tail;
}

void runShape(benchmark::State& state, unsigned pattern, Shape const& shape) {
    MoBenchTask const small = MoBenchCatalogue::makeTask({pattern}, makeText(shape, kSizeForIcu));
    MoBenchTask const large = MoBenchCatalogue::makeTask({pattern}, makeText(shape, kSize));
    large.runLibrary(state);
    std::string const cleansed = large.cleansedByLibrary();
    if (shape.stays && cleansed != large.text)
        state.SkipWithError("bytes were deleted that stay");
    if (cleansed != large.cleansedByRe2())
        state.SkipWithError("RE2 gives other bytes");
    if (small.cleansedByLibrary() != small.cleansedByWholeText())
        state.SkipWithError("ICU gives other bytes");
}

void registerOne(unsigned pattern, char const* name, void (*body)(benchmark::State&, unsigned, Shape const&),
                 Shape const& shape) {
    std::string const fullName = "slow/" + std::to_string(pattern) + '/' + name;
    benchmark::RegisterBenchmark(fullName.c_str(), [=, &shape](benchmark::State& state) {
        body(state, pattern, shape);
    })->Unit(benchmark::kMillisecond);
}

void runOrdinary(benchmark::State& state, unsigned pattern, Shape const&) {
    MoBenchCatalogue::makeTask({pattern}, MoBenchCorpus::make(MoBenchCorpus::eHtml, kSize)).runLibrary(state);
}

bool registerAll() {
    auto const count = static_cast<unsigned>(MoCatalogue::rows().size());
    for (unsigned pattern = 1; pattern <= count; ++pattern) {
        registerOne(pattern, "ordinary", runOrdinary, kShapes[0]);
        for (Shape const& shape : kShapes) {
            if (shape.pattern == 0 || shape.pattern == pattern)
                registerOne(pattern, shape.name, runShape, shape);
        }
    }
    return true;
}

bool const isRegistered = registerAll();

} // namespace
