#include "MoDiffHtml.h"

#include "MoDiffBase64.h"
#include "MoDiffMimeText.h"
#include "MoDiffPageBudget.h"
#include "MoDiffScriptTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using testing::Not;

struct Row {
    std::string text;
    std::string expected;
};

TEST(HtmlTest, BytesOfFilesBecomeTextThatIsSeen) {
    Row const rows[] = {
        {"plain \xC3\xA9", "plain \xC3\xA9"},
        {"<script>&\"'", "&lt;script&gt;&amp;&quot;&#39;"},
        {"&lt;", "&amp;lt;"},
        {"\xFF<\xC3", "\\xff&lt;\\xc3"},
        {std::string("a\0b", 3), "a\\x00b"},
        {"a\x1B[1m\r\n\t", "a\\x1b[1m\\r\\n\\t"},
        {"back\\slash", "back\\\\slash"},
        {"\xE2\x80\xAE"
         "fdp\xE2\x81\xA6",
         "\\xe2\\x80\\xaefdp\\xe2\\x81\\xa6"}, // written from right to left
        {"\xE2\x80\x8B\xEF\xBB\xBF\xC2\xAD", "\\xe2\\x80\\x8b\\xef\\xbb\\xbf\\xc2\\xad"}, // of no width
        {"\xED\xA0\x80\xF4\x90\x80\x80", "\\xed\\xa0\\x80\\xf4\\x90\\x80\\x80"},          // no characters
        {"\xEF\xBC\x9Cscript\xEF\xBC\x9E", "\xEF\xBC\x9Cscript\xEF\xBC\x9E"}, // look like brackets, are none
    };
    for (Row const& row : rows)
        EXPECT_EQ(row.expected, MoDiffHtml::bytes(row.text)) << testing::PrintToString(row.text);
    EXPECT_EQ("once\\x1b&lt;\\x1b", MoDiffHtml::words("once\\x1b<\x1B"));
    EXPECT_EQ("a\n&lt;b\n\nc\\r", MoDiffHtml::lines("a\r\n<b\n\nc\r"));
}

TEST(HtmlTest, ADocumentKeepsItsCharactersAndLosesWhatActsByItself) {
    Row const rows[] = {
        {"<p class=\"a\">&amp;\n'\t", "<p class=&quot;a&quot;>&amp;amp;\n'\t"},
        {"\xE2\x80\xAE\xC3\xA9", "\xE2\x80\xAE\xC3\xA9"},
        {std::string("\0\xFF", 2), "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"<LiNk rel=preconnect><meta x><BASE href=/>", "<x-LiNk rel=preconnect><x-meta x><x-BASE href=/>"},
        {"<lin", "<lin"},
        {"<menu><listing>", "<menu><listing>"},
        {"\"><script>", "&quot;><script>"},
    };
    for (Row const& row : rows)
        EXPECT_EQ(row.expected, MoDiffHtml::sourceDocument(row.text)) << testing::PrintToString(row.text);
}

TEST(HtmlTest, TitlesOfChangesBecomeCode) {
    std::string const arrow = " <span class=\"arrow\">→</span> ";
    Row const rows[] = {
        {"`a` -> `<b>`", "<code class=\"old\">a</code>" + arrow + "<code class=\"new\">&lt;b&gt;</code>"},
        {"`` -> `b`", "nothing" + arrow + "<code class=\"new\">b</code>"},
        {"`a` -> ``", "<code class=\"old\">a</code>" + arrow + "nothing"},
        {"`a` -> `b` -> `c`", "`a` -&gt; `b` -&gt; `c`"}, // nobody knows which one parts it
        {"missing: <none>", "missing: &lt;none&gt;"},
        {"` -> `", "` -&gt; `"},
        {"", ""},
    };
    for (Row const& row : rows)
        EXPECT_EQ(row.expected, MoDiffHtml::title(row.text)) << row.text;
}

TEST(HtmlTest, LinesHaveElementsForTheirStyles) {
    MoDiffStyledLine const line = {{MoDiffStyle::eRemoved, "a<"},
                                   {MoDiffStyle::eRemovedMark, "b"},
                                   {MoDiffStyle::eAddedMark, "\"c"},
                                   {MoDiffStyle::eHidden, "[Script: 50 bytes]", "<script>"},
                                   {MoDiffStyle::eHidden, "d"}};
    EXPECT_EQ("a&lt;<del>b</del><ins>&quot;c</ins><details class=\"hidden\"><summary>[Script: 50 bytes]</summary>"
              "&lt;script&gt;</details><span class=\"hidden\">d</span>",
              MoDiffHtml::line(line));
}

TEST(HtmlTest, CountsAreWords) {
    EXPECT_EQ("0 pairs", MoDiffHtml::count(0, "pair"));
    EXPECT_EQ("1 pair", MoDiffHtml::count(1, "pair"));
    EXPECT_EQ("999 pairs", MoDiffHtml::count(999, "pair"));
    EXPECT_EQ("1,000", MoDiffHtml::number(1000));
    EXPECT_EQ("12,345,678,901", MoDiffHtml::number(12345678901));
}

TEST(Base64Test, EncodesAndDecodes) {
    Row const rows[] = {
        {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {std::string("\xFB\xFF\0", 3), "+/8A"}};
    for (Row const& row : rows) {
        EXPECT_EQ(row.expected, MoDiffBase64::encode(row.text));
        EXPECT_EQ(row.text, MoDiffBase64::decode(row.expected));
    }
    EXPECT_EQ("foo", MoDiffBase64::decode("Zm\r\n 9v"));
}

TEST(MimeTextTest, FindsThePageOfAnArchive) {
    std::string const top =
        "MIME-Version: 1.0\r\nContent-Type: multipart/related; boundary=\"=_x\"; type=\"text/html\"\r\n\r\n";
    std::string const image = "--=_x\r\nContent-Type: image/png\r\n\r\nContent-Type: text/html\r\n--=_x\r\n";
    Row const rows[] = {
        {top + "--=_x\r\nContent-Type: text/html\r\n\r\n<p>=41\r\n--=_x--\r\n", "<p>=41\r"},
        {top + image +
             "content-type: TEXT/HTML\r\nContent-Transfer-Encoding: Quoted-Printable\r\n\r\n<p "
             "=\r\n=3D=C3=A9=\n=4x=\r\n--=_x--",
         "<p =\xC3\xA9=4x=\r"},
        {top + "--=_x\nContent-Type: text/html\nContent-Transfer-Encoding: base64\n\nPHA+\r\nMTwv\ncD4=\n--=_x--",
         "<p>1</p>"},
        {"Content-Type: text/html\n\n<p>\n", "<p>\n"},
        {"Content-Type: multipart/mixed; boundary=b; x\n\n--b\nContent-Type: text/html\n\n1\n--b\nContent-Type: "
         "text/html\n\n2\n",
         "1"},
        {top + "--=_x\nContent-Type: text/html\n\n--=_x\n\nnext", ""},
        {top + image, ""},
        {top + "--=_x\nContent-Type: text/html", ""},
        {"", ""},
        {"<html>", ""},
    };
    for (Row const& row : rows)
        EXPECT_EQ(row.expected, MoDiffMimeText::firstHtml(row.text)) << row.text;
}

TEST(ScriptTableTest, CellsStandInATable) {
    Row const rows[] = {
        {R"(sheet "Plan", cell B11, value: master number 56, actual "<0>")",
         "<tr><td>Plan</td><th scope=\"row\">cell B11</th><td>value</td><td class=\"old\">number 56</td>"
         "<td class=\"new\">&quot;&lt;0&gt;&quot;</td></tr>"},
        {R"(sheet "a, b", cells A1:B2, font: master "x", actual "y")",
         "<td>a, b</td><th scope=\"row\">cells A1:B2</th>"},
    };
    for (Row const& row : rows)
        EXPECT_THAT(MoDiffScriptTable::toHtml(row.text), HasSubstr(row.expected)) << row.text;
    for (char const* const line :
         {R"(sheet "P", row 6 of the actual file put in)", R"(sheet "P", cell A1, x: master ", actual ", actual "")",
          R"(sheet "P)", R"(sheet "P", cell A1: master 1)", "2 differences",
          R"(sheet "P", cell: actual 1, x: master 2)"}) {
        std::string const html = MoDiffScriptTable::toHtml(line);
        EXPECT_THAT(html, Not(HasSubstr("<table"))) << line;
        EXPECT_THAT(html, HasSubstr(MoDiffHtml::words(line))) << line;
    }
    EXPECT_THAT(MoDiffScriptTable::toHtml("a\r\n-b\n+<c"),
                HasSubstr("a\n<span class=\"old\">-b\n</span><span class=\"new\">+&lt;c\n</span>"));
    EXPECT_EQ("", MoDiffScriptTable::toHtml(""));
}

TEST(PageBudgetTest, WhatOnePageLeavesIsForTheOthers) {
    MoDiffPageBudget budget(1000, 4, 100, 400);
    EXPECT_EQ(250U, budget.share());
    budget.take(40);
    EXPECT_EQ(320U, budget.share());
    budget.take(0);
    EXPECT_EQ(400U, budget.share());
    budget.take(2000);
    EXPECT_EQ(100U, budget.share());
    budget.take(100);
    EXPECT_EQ(100U, budget.share());
}

} // namespace
