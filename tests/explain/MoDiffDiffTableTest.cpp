#include "MoDiffDiffTable.h"

#include "../MoTestTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using testing::Not;

class DiffTableTest : public testing::Test {
protected:
    struct Shown {
        std::string html;
        std::size_t places;
    };

    static Shown show(char const* format, std::string const& master, std::string const& actual, std::size_t room) {
        MoTestTree::write("master", master);
        MoTestTree::write("actual", actual);
        MoDiffPairExplanation const explanation =
            MoDiffPairExplanation::explain(*MoDiffFormatTable::find(format), {}, "master", "actual", "3 < 4", {});
        MoDiffDiffTable table(explanation, room);
        std::string const html = table.toHtml();
        return {html, table.places()};
    }

    static std::string rows(std::size_t count, std::string const& word) {
        std::string text;
        for (std::size_t row = 0; row < count; ++row)
            text += word + " " + std::to_string(row) + "\n";
        return text;
    }

    MoTestTree m_tree;
};

TEST_F(DiffTableTest, WhatHasNoRoomIsCounted) {
    std::string master = rows(400, "line");
    std::string actual = master;
    for (std::size_t at = 0; (at = actual.find("0\n", at)) != std::string::npos; ++at)
        actual[at] = 'x'; // 40 places
    Shown const all = show("csi", master, actual, 1'000'000);
    EXPECT_EQ(40U, all.places);
    EXPECT_THAT(all.html, Not(HasSubstr("too large")));
    Shown const some = show("csi", master, actual, all.html.size() / 2);
    EXPECT_GT(some.places, 15U);
    EXPECT_LE(some.html.size(), all.html.size() / 2 + 200);
    EXPECT_THAT(some.html,
                HasSubstr(std::to_string(40 - some.places) + " more places would make this page too large"));
}

TEST_F(DiffTableTest, ALongHunkIsFoldedAndOneBeyondAllMeasureCut) {
    Shown const folded = show("csi", "begin\n", "begin\n" + rows(300, "new"), 1'000'000);
    EXPECT_EQ(1U, folded.places);
    EXPECT_THAT(folded.html, HasSubstr("<summary>241 more rows</summary>"));
    EXPECT_THAT(folded.html, HasSubstr("new 299"));
    Shown const cut = show("csi", "begin\n", "begin\n" + rows(300, "new"), 2000);
    EXPECT_EQ(1U, cut.places);
    EXPECT_LT(cut.html.size(), 3500U);
    EXPECT_THAT(cut.html, HasSubstr("more rows would make this page too large"));
    EXPECT_THAT(cut.html, HasSubstr("new 0"));
}

struct Row {
    char const* format;
    std::string master;
    std::string actual;
    char const* expected;
};

TEST_F(DiffTableTest, EachKindOfFileHasItsOwnForm) {
    Row const rows[] = {
        {"csv", "a,b\nc,d\n", "a,b\nc,<e\n", "Master record 2, field 2 · actual record 2, field 2"},
        {"csv", "a,b\nc,d\n", "a,b\nc,<e\n", "<td class=\"new\">c,<ins>&lt;e</ins></td>"},
        {"csi", "1\n2\n", "1\n3\n", "Master line 2, column 1 · actual line 2, column 1"},
        {"csi", "1\n", "1\n2\n", "<th></th><td class=\"none\"></td><th scope=\"row\">2</th><td class=\"new\">2</td>"},
        {"html", "<p>1</p>\n<p>2</p>\n<p>3</p>\n", "<p>1</p><p>4</p><p>3</p>",
         "<th scope=\"row\">3</th><td>&lt;p&gt;3&lt;/p&gt;</td>"}, // beside what changed, not changed itself
        {"html", "<p>1</p>\n<p>2</p>\n<p>3</p>\n", "<p>1</p><p>4</p><p>3</p>",
         "<td class=\"old\">&lt;p&gt;<del>2</del>&lt;/p&gt;</td>"},
        {"csv", std::string("a\0b", 3), std::string("a\0<", 3), "00000000  61 00 <ins>3c</ins>"},
        {"html", "same\r\n", "same\n", "do not differ in what is compared"},
        {"vmd", "", "", "3 &lt; 4"},
    };
    for (Row const& row : rows)
        EXPECT_THAT(show(row.format, row.master, row.actual, 100'000).html, HasSubstr(row.expected)) << row.expected;
}

} // namespace
