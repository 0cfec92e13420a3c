#include "MoDiffPairExplanation.h"

#include "../MoTestTree.h"
#include "MoDiffDiffText.h"
#include "MoDiffGroups.h"
#include "MoDiffShownText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <system_error>

namespace {

using testing::HasSubstr;

class PairExplanationTest : public testing::Test {
protected:
    MoDiffPairExplanation explain(char const* format, std::string const& master, std::string const& actual,
                                  MoDiffPairExplanation::Options const& options = {}) {
        MoTestTree::write("master", master);
        MoTestTree::write("actual", actual);
        return MoDiffPairExplanation::explain(*MoDiffFormatTable::find(format), {}, "master", "actual",
                                              "master: 3 pages\nactual: 4\tpages\n", options);
    }

    /// The lines as a plain console shows them.
    std::string shown(MoDiffPairExplanation const& explanation, MoDiffDiffText::Options options = {}) {
        options.brackets = true;
        std::string text;
        MoDiffDiffText::write(explanation, options, [&](MoDiffStyledLine const& line) {
            std::string all;
            for (MoDiffSpan const& span : line)
                all += span.style == MoDiffStyle::eHidden ? "~" + span.text + "~" : span.text;
            text += all.substr(0, all.find_last_not_of(' ') + 1) + "\n";
        });
        return text;
    }

    static std::string wordsOf(MoDiffPairExplanation const& explanation) {
        std::string words;
        for (MoDiffLabel const& label : explanation.labels())
            words += (words.empty() ? "" : "; ") + label.words;
        return words;
    }

    MoTestTree m_tree;
};

struct LabelRow {
    char const* format;
    char const* master;
    char const* actual;
    char const* expected;
};

LabelRow const kLabels[] = {
    {"csi", "total 10 of 4", "total 12.5 of 4", "only numbers differ, by up to 20 %, beyond the numeric tolerance"},
    {"csi", "1,000.00", "1.000,00", "only numbers differ, by up to 0 %, within the numeric tolerance"},
    {"csi", "1,234", "1.234",
     "only numbers differ, by up to 99.9 %, beyond the numeric tolerance; separators differ: `1,234` read as 1234, "
     "`1.234` read as 1.234"},
    {"csi", "12,345 kg", "12345 kg", "only numbers differ, by up to 0 %, within the numeric tolerance"},
    {"csi", "w 1.0", "w 1.000000000000001", "only numbers differ, by up to 1.11e-13 %, within the numeric tolerance"},
    {"csi", "-5", "5", "only numbers differ, by up to 200 %, beyond the numeric tolerance"},
    {"csi", "chart1", "chart2", ""},
    {"html", "<td width=\"10\">x", "<td width=\"20\">x",
     "only numbers differ, by up to 50 %, beyond the numeric tolerance"},
    {"csi", "a b\nc", "a  b c\n", "only blanks and line ends differ"},
    {"csi", "ab", "a bc", ""},
    {"csi", "\xC3\x84rger", "\xC3\xA4RGER", "only upper and lower case differ"},
    {"csi", "one\ntwo\nthree\n", "three\ntwo\none\n", "only the order of lines differs"},
    {"html", "<p>a</p>\n<p>b</p>\n<p>c</p>\n", "<p>c</p>\n<p>b</p>\n<p>a</p>\n", "only the order of lines differs"},
    {"csv", "\xEF\xBB\xBFK\xC3\xB6ln\n", "K\xF6ln\n",
     "only the encoding differs: UTF-8 with byte-order mark became ISO 8859-1 or a relative"},
    {"csi", "a\nb\n", "a\nb\nc\nd\n", "the master is the beginning of the actual; 2 lines more"},
    {"html", "<p>one</p>\n<p>two</p>", "<p>one</p><p>tw", "the actual is the beginning of the master"},
    {"csi", "a\nb\nc\n", "a\nc\n", "2 bytes less"},
    {"csi", "a b c", "x b z", ""},
    {"csi", "same", "same", ""},
};

TEST_F(PairExplanationTest, LabelsSayWhatHoldsForAllOfADifference) {
    for (LabelRow const& row : kLabels)
        EXPECT_EQ(row.expected, wordsOf(explain(row.format, row.master, row.actual)))
            << row.master << "|" << row.actual;
}

struct TextRow {
    char const* format;
    char const* master;
    char const* actual;
    char const* expected;
};

TextRow const kTexts[] = {
    {"html", "<p>a</p>\r\n<p onload=\"x()\">Page 1 of 3</p>\r\n<p>z</p>", "<p>a</p>\n<p >Page 1/3</p>\n<p>z</p>",
     "@@ master 2:23, actual 2:11 @@\n <p>a</p>\n-<p ~onload=\"x()\"~>Page 1[- of -]3</p>\n"
     "+<p >Page 1{+/+}3</p>\n <p>z</p>\n"},
    {"csi", "old\nb\n", "b\n", "4 bytes less\n@@ master 1:1, actual 1:1 @@\n-old\n b\n"},
    {"csi", "a\tb \x01", "a\tc \x01", "@@ master 1:3, actual 1:3 @@\n-a\\t[-b-] \\x01\n+a\\t{+c+} \\x01\n"},
    {"rawxml", "<a>\n</a>", "<a></a>",
     "only blanks and line ends differ\n1 byte less\n@@ master 1:4, actual 1:4 @@\n-<a>[-\\n-]\n-</a>\n+<a></a>\n"},
    {"csv", "n,v\n\"a\nb\",1\n", "n,v\n\"a\nb\",2\n",
     "only numbers differ, by up to 50 %, beyond the numeric tolerance\n"
     "@@ master 3:4 (record 2, field 2), actual 3:4 (record 2, field 2) @@\n n,v\n \"a\n-b\",[-1-]\n+b\",{+2+}\n"},
    {"csv", "k,v\r\n", "k,v\n",
     "only blanks and line ends differ\n"
     "@@ master 1:4 (record 1, field 2), actual 1:4 (record 1, field 2) @@\n-k,v[-\\r\\n-]\n+k,v{+\\n+}\n"},
    {"pdf", "%PDF", "%PDF-", "master: 3 pages\nactual: 4\\tpages\n"},
    {"csi", "same\r\n", "same\n", "The files do not differ in what is compared.\n"},
};

TEST_F(PairExplanationTest, ShowsFilesAsTheyAre) {
    for (TextRow const& row : kTexts)
        EXPECT_EQ(row.expected, shown(explain(row.format, row.master, row.actual))) << row.format << row.master;
}

TEST_F(PairExplanationTest, RawComparesTheFilesThemselves) {
    MoDiffPairExplanation::Options raw;
    raw.raw = true;
    EXPECT_TRUE(explain("html", "<p>a</p>\r\n", "<p>a</p>\n").changes().empty());
    EXPECT_EQ(1U, explain("html", "<p>a</p>\r\n", "<p>a</p>\n", raw).changes().size());
    EXPECT_EQ(MoDiffPairExplanation::eBytes, explain("pdf", std::string("a\0b", 3), "a", raw).view());
}

TEST_F(PairExplanationTest, BytesAreShownInHexWithTheirOffset) {
    std::string master(40, '\0');
    std::string actual = master + "!";
    actual[17] = 'A';
    EXPECT_EQ("-00000010  00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00  ................\n"
              "+00000010  00 41 00 00 00 00 00 00 00 00 00 00 00 00 00 00  .A..............\n"
              "-00000020  00 00 00 00 00 00 00 00                          ........\n"
              "+00000020  00 00 00 00 00 00 00 00 21                       ........!\n",
              shown(explain("csv", master, actual)));
}

TEST_F(PairExplanationTest, WhatFollowsANulIsNotShownAndSaidSo) {
    std::string const text = shown(explain("csi", std::string("a\0b", 3), "c"));
    EXPECT_THAT(text, HasSubstr("The master holds a NUL at byte 1; what follows it is not compared.\n"));
    EXPECT_THAT(text, HasSubstr("-a\n+c\n"));
}

TEST_F(PairExplanationTest, LongLinesAreCutAroundChangesAndLongHunksCounted) {
    std::string const filler(5000, 'x');
    std::string const text = shown(explain("csi", filler + " old " + filler, filler + " new " + filler));
    EXPECT_THAT(text, HasSubstr("-[4921 bytes]" + std::string(79, 'x') + " [-old-] " + std::string(79, 'x')));
    EXPECT_LT(text.size(), 1000U);
    std::string master = "begin\n";
    for (int line = 0; line < 500; ++line)
        master += "line " + std::to_string(line) + "\n";
    EXPECT_THAT(shown(explain("csi", master, "begin\n")), HasSubstr("-line 39\n-460 more lines\n"));
    std::string const script = "<script>" + std::string(100, 's') + "</script>";
    EXPECT_THAT(shown(explain("html", "<p>" + script + "old", "<p>" + script + "new")),
                HasSubstr("-<p>~[Script: 117 bytes]~[-old-]\n"));
}

TEST_F(PairExplanationTest, SidesStandBesideEachOther) {
    MoDiffDiffText::Options options;
    options.sideBySide = true;
    options.width = 43;
    std::string const wide = "\xE4\xBD\xA0"; // takes two columns
    EXPECT_EQ("@@ master 2:1, actual 2:1 @@\n"
              "a                      a\n"
              "[-old-] " +
                  wide + wide + "         | {+new+} " + wide + wide +
                  "\n"
                  "b                      b\n"
                  "                     > more words than fit\n"
                  "                     > in here\n",
              shown(explain("csi", "a\nold " + wide + wide + "\nb\n",
                            "a\nnew " + wide + wide + "\nb\nmore words than fit in here\n"),
                    options));
}

TEST_F(PairExplanationTest, PairsWithTheSameChangesMakeAGroup) {
    MoDiffGroups groups;
    auto const add = [&](char const* pair, char const* master, char const* actual) {
        MoDiffPairExplanation const explanation = explain("html", master, actual);
        groups.add(pair, explanation.signature(), explanation.kinds());
    };
    add("odd", "<p>x</p><p>Page 1 of 3</p><i>old</i>", "<p>x</p><p>Page 1/3</p><i>new</i>");
    add("first", "<p>Page 1 of 3</p>", "<p>Page 1/3</p>");
    add("twice", "<b>q</b>\n<p>Page 1 of 2</p><p>Page 2 of 2</p>", "<b>q</b>\n<p>Page 1/2</p><p>Page 2/2</p>");
    add("turned", "<p>Page 1/3</p>", "<p>Page 1 of 3</p>");
    auto const all = groups.groups();
    ASSERT_EQ(3U, all.size());
    EXPECT_EQ((std::vector<std::string>{"first", "twice"}), all[0].pairs);
    EXPECT_EQ("`Page 1 of 3` -> `Page 1/3` in 2 pairs", MoDiffGroups::titleOf(all[0]));
    EXPECT_EQ("`Page 1 of 3` -> `Page 1/3` and 1 more in 1 pair", MoDiffGroups::titleOf(all[1]));
    auto const shared = groups.sharedKinds();
    ASSERT_EQ(1U, shared.size());
    EXPECT_EQ(3U, shared[0].pairs);
    EXPECT_EQ((std::vector<std::size_t>{0, 1}), shared[0].inGroups);
}

TEST_F(PairExplanationTest, SaysWhichFileCannotBeRead) {
    MoTestTree::write("master", "x");
    mkfifo("fifo", 0600);
    for (char const* const name : {"nowhere", ".", "fifo"}) {
        try {
            MoDiffPairExplanation::explain(*MoDiffFormatTable::find("csi"), {}, "master", name, "", {});
            ADD_FAILURE() << name;
        } catch (std::system_error const& error) {
            EXPECT_THAT(error.what(), HasSubstr(std::string("cannot read ") + name));
        }
    }
}

} // namespace
