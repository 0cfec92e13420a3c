#include "MoDiffNormalizationPattern.h"
#include "KLTAssertError.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

TEST(MoDiffNormalizationPattern, deletes_every_match_and_zeroes_the_rest) {
    std::string const emoji = "\xF0\x9F\x98\x80";
    // clang-format off
    std::string const rows[][3] = {
        {"\r", "a\r\nb\rc\r", "a\nbc"}, {"b", "abcb", "ac"}, {"(?s).*", "a\nb", ""}, {".*", "a\nb", "\n"},
        {"a.b", "a\nb", "a\nb"}, {"(?s)a.b", "a\nb", ""}, {"x", "", ""}, {"x*", "axxb", "ab"}, {"A", "aA", "a"},
        {"^a", "aab\na", "ab\na"}, {"(?m)^a", "aab\na", "ab\n"}, {"b$", "b\nb", "b\n"}, {"a+?", "aab", "b"},
        {"(a)(b)", "$1ab\\", "$1\\"}, {"none", "no é match \xE9", "no é match \xE9"},
        {"x.y", "xéyx€yx" + emoji + "y", ""}, {"x..y", "xéy", "xéy"}, {"é", "aéb\xE9", "ab\xE9"},
        {"x.y", "x\xE9y", ""}, {"x..y", "x\xC3\xC3y", ""}, {"x.y", "x\xE2\x82y", "x\xE2\x82y"},
        {"b", "\xE9" "b\xFF" "b\x80", "\xE9\xFF\x80"}, {"x", "\xC3x\xA9", "\xC3\xA9"},
        {"é", "\xC3x\xA9", "\xC3x\xA9"},
        {"[^a]", "a\xE2\x82" "a\xFF", "aa"}, {emoji, emoji + "a" + emoji, "a"}, {"\\bx", "éx x", "éx "}};
    // clang-format on
    for (auto const& [expression, text, expected] : rows) {
        std::vector<char> buffer(text.c_str(), text.c_str() + text.size() + 1);
        std::string zeroed = expected;
        zeroed.resize(buffer.size());
        MoDiffNormalizationPattern(expression.c_str()).normalizeText(buffer.data());
        EXPECT_EQ(zeroed, std::string(buffer.data(), buffer.size())) << expression << " on " << text;
    }
}

TEST(MoDiffNormalizationPattern, leaves_the_text_alone_when_matching_gives_up) {
    MoDiffNormalizationPattern const pattern("(a|b)*c");
    std::string const tooMuch = "abc" + std::string(3000000, 'a');
    std::string text = tooMuch;
    EXPECT_THROW(pattern.normalizeText(text.data()), KLTAssertError);
    EXPECT_TRUE(tooMuch == text);
    char small[] = "abcd";
    pattern.normalizeText(small); // and serves on
    EXPECT_STREQ("d", small);
}

} // namespace
