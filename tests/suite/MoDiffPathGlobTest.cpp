#include "MoDiffPathGlob.h"

#include <gtest/gtest.h>

namespace {

TEST(PathGlob, MeetsWholePaths) {
    struct Row {
        char const* pattern;
        char const* text;
        bool meets;
    };
    Row const rows[] = {
        {"a/*.html", "a/b.html", true},
        {"a/*.html", "a/b/c.html", false},
        {"a/*.html", "xa/b.html", false},
        {"a/*.html", "a/b.htmlx", false},
        {"a/**.html", "a/b/c.html", true},
        {"**/b", "b", true},
        {"**/b", "xb", false},
        {"**/b", "a/xb", false},
        {"**/b", "a/c/b", true},
        {"a/**/b", "a/b", true},
        {"a/**/b", "a/c/d/b", true},
        {"a/**/b", "ab", false},
        {"a/**/b/*c", "a/b/x/b/yc", true},
        {"a/**/b/*c", "a/b/x/yc", false},
        {"a/**", "a/", true},
        {"a/**", "a", false},
        {"a**c*e", "a/b/cd/ce", true},
        {"a*c*e", "abcdccfe", true},
        {"a*c*e", "abcd/ccfe", false},
        {"*ab", "aab", true},
        {"a?c", "abc", true},
        {"a?c",
         "a\xc3\xa4"
         "c",
         true},
        {"a?c", "a/c", false},
        {"a?", "a", false},
        {"a[b]", "a[b]", true},
        {"a[b]", "ab", false},
        {"a\\*b", "a\\xb", true},
        {"a?c*", "a?c*", true},
        {"", "", true},
        {"", "a", false},
        {"***", "a/b", true},
    };
    for (Row const& row : rows)
        EXPECT_EQ(row.meets, MoDiffPathGlob(row.pattern).matches(row.text)) << row.pattern << " on " << row.text;
}

TEST(PathGlob, TakesTimeInBounds) {
    std::string pattern;
    for (int count = 0; count < 30; ++count)
        pattern += "**a/**/";
    EXPECT_FALSE(MoDiffPathGlob(pattern + "c").matches(std::string(3000, 'a') + "/b"));
}

} // namespace
