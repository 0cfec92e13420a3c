#include "MoDiffBlindSpots.h"

#include "MoDiffEnginePatterns.h"

#include <gtest/gtest.h>

namespace {

struct DifferenceRow {
    char const* format;
    char const* master;
    char const* actual;
    char const* expected; ///< of each gap the places at which both begin to differ, the lengths, the patterns
};

DifferenceRow const kDifferences[] = {
    {"html", "<p>a<script>1</script>b", "<p>a<script>1</script>b", ""},
    {"html", "<p>a<script>1</script>b", "<p>a<script>12</script>b", "13:13 18,19 Script; "},
    {"html", "<p>a<script>1</script>b", "<p>ab", "4:4 18,0 Script; "},
    {"html", "ab<script>1</script>", "a<script>1</script>b", "1:1 0,18 Script; 2:20 18,0 Script; "},
    {"html", "a\r\nb\r\nc", "a\nb\nc", "3:2 2,1 CarriageReturn returns; 6:4 2,1 CarriageReturn returns; "},
    {"html", "a<script>1\r\n2</script>b", "a<script>1\n3</script>b", "12:11 21,20 CarriageReturn Script; "},
    {"html", "a\n\n<script>1</script>b", "a\n<script>1</script>b", "2:2 20,19 Newline; "},
    {"html", "a\n<script>1</script>b", "a<script>1</script>\nb", "1:1 19,19 Newline Script; "},
    {"csi", "a\rb\r", "ab\r\r", "2:1 1,0 CarriageReturn returns; 4:4 1,2 CarriageReturn returns; "},
    {"csi", "\xc3\xa4", "\xc3\xa4", ""},
};

MoDiffSourceText sourceOf(char const* format, std::string const& text) {
    return {text, MoDiffEnginePatterns::of(*MoDiffFormatTable::find(format), {})};
}

std::string words(MoDiffBlindSpots::Difference const& difference) {
    std::string text =
        std::to_string(difference.firstByte.master) + ":" + std::to_string(difference.firstByte.actual) + " " +
        std::to_string(difference.gap.master.size()) + "," + std::to_string(difference.gap.actual.size());
    for (std::string const& pattern : difference.patterns)
        text += " " + pattern;
    return text + (difference.isOfReturns ? " returns; " : "; ");
}

TEST(BlindSpotsTest, DeletedStretchesThatDifferAreFoundInBothFiles) {
    for (DifferenceRow const& row : kDifferences) {
        MoDiffBothSides<MoDiffSourceText> const sources = {sourceOf(row.format, row.master),
                                                           sourceOf(row.format, row.actual)};
        ASSERT_EQ(sources.master.text(), sources.actual.text()) << row.master;
        std::string found;
        for (MoDiffBlindSpots::Difference const& difference : MoDiffBlindSpots::findDifferences(sources))
            found += words(difference);
        EXPECT_EQ(found, row.expected) << row.master << " / " << row.actual;
    }
}

struct RestRow {
    char const* format;
    char const* text;
    char const* expected; ///< begin, length and pattern of each
};

RestRow const kRests[] = {
    {"html", "<p>1</p><script>x = 1;\r\n</p><p>2</p><script></script>", "8+45 Script"}, // one end for two beginnings
    {"html", "<p>1</p><script>x = 1;</p>", ""},                                         // no end, nothing is deleted
    {"html", "<p>one</p><script>x</script>\n", "10+19 Script"},
    {"html", "<p>one two three</p><script>x</script> four", ""},
    {"html", "<p>1</p><script>x = 1;</script>2", "8+23 Script"},
    {"html", "<p>one two three</p>\r\n \n", ""},
    {"html", "a\n\n\n", "1+3 Newline"},
    {"csi", "a\r", ""},
    {"html", "", ""},
};

TEST(BlindSpotsTest, GapsThatTakeARestAreNamed) {
    for (RestRow const& row : kRests) {
        std::string found;
        for (MoDiffBlindSpots::Rest const& rest : MoDiffBlindSpots::findRests(sourceOf(row.format, row.text)))
            found += std::to_string(rest.gap.begin) + "+" + std::to_string(rest.gap.size()) + " " + rest.pattern;
        EXPECT_EQ(found, row.expected) << row.text;
    }
}

TEST(BlindSpotsTest, EachByteIsComparedOrNamesWhatHidesIt) {
    std::string const text("a\n<script>\r1</script>b\0c", 24);
    MoDiffSourceText const source = sourceOf("html", text);
    char const* const expected[] = {"", "Newline", "Script", "CarriageReturn", "Script", "", "NUL", "NUL"};
    std::size_t const places[] = {0, 1, 2, 10, 20, 21, 22, 23};
    for (std::size_t index = 0; index < std::size(places); ++index)
        EXPECT_EQ(MoDiffBlindSpots::hiderOf(source, places[index]), expected[index]) << places[index];
}

} // namespace
