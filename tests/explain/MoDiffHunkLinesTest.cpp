#include "MoDiffHunkLines.h"

#include "../MoTestTree.h"

#include <gtest/gtest.h>
#include <random>
#include <sstream>

namespace {

using Line = MoDiffHunkLines::Line;

std::string textOf(Line const& line) {
    std::string text;
    for (MoDiffSpan const& span : line.spans)
        text += span.text;
    bool const showsLineEnd = text.size() > 1 && text.compare(text.size() - 2, 2, "\\n") == 0; // where it is marked
    return text.substr(0, text.size() - (showsLineEnd ? 2 : 0));
}

std::vector<std::string> linesOf(std::string const& text) {
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

class HunkLinesTest : public testing::Test {
protected:
    static MoDiffPairExplanation explain(char const* format, std::string const& master, std::string const& actual) {
        MoTestTree::write("master", master);
        MoTestTree::write("actual", actual);
        return MoDiffPairExplanation::explain(*MoDiffFormatTable::find(format), {}, "master", "actual", "", {});
    }

    MoTestTree m_tree;
};

/// Whether each line has the number that it has in its file, and what no hunk has not gone lost: notes aside.
void expectNumbered(std::vector<Line> const& shown, std::vector<std::string> const& file, std::size_t& last) {
    for (Line const& line : shown) {
        if (line.number == 0)
            continue;
        ASSERT_GT(line.number, last);
        ASSERT_LE(line.number, file.size());
        EXPECT_EQ(file[line.number - 1], textOf(line)) << "line " << line.number;
        last = line.number;
    }
}

void expectNumbered(MoDiffPairExplanation const& explanation, std::string const& master, std::string const& actual) {
    MoDiffHunkLines const lines(explanation, 15);
    std::size_t lastOfMaster = 0;
    std::size_t lastOfActual = 0;
    for (MoDiffHunk const& hunk : explanation.hunks()) {
        for (MoDiffHunkLines::Block const& block : lines.of(hunk)) {
            expectNumbered(block.master, linesOf(master), lastOfMaster);
            expectNumbered(block.actual, linesOf(actual), lastOfActual);
        }
    }
}

TEST_F(HunkLinesTest, LinesHaveTheNumbersOfTheirFiles) {
    std::mt19937 random(17);
    for (int round = 0; round < 200; ++round) {
        std::string master;
        std::string actual;
        for (int line = 0; line < 60; ++line) {
            std::string const text = "line " + std::to_string(random() % 500) + "\n";
            auto const deed = random() % 12;
            master += deed == 0 ? "" : text;
            actual += deed == 1 ? "" : deed == 2 ? "word " + text : text;
        }
        if (random() % 3 == 0)
            actual.insert(0, std::string("new\n") + (round % 2 ? "new 2\n" : ""));
        expectNumbered(explain("csi", master, actual), master, actual);
        if (HasFailure())
            FAIL() << "round " << round << "\n" << master << "---\n" << actual;
    }
}

TEST_F(HunkLinesTest, ManyLinesAreCountedAndUnchangedOnesFolded) {
    std::string filler;
    for (int line = 0; line < 30; ++line)
        filler += "a" + std::to_string(line) + "\n";
    std::string const block = "x\n" + filler;
    MoDiffPairExplanation const explanation = explain("csi", "begin\nend\n", "begin\n" + block + "end\n");
    MoDiffHunkLines const lines(explanation, 10);
    auto const blocks = lines.of(explanation.hunks().front());
    ASSERT_EQ(11U, blocks[1].actual.size());
    EXPECT_EQ("21 more lines", textOf(blocks[1].actual.back()));
    EXPECT_EQ(0U, blocks[1].actual.back().number);
    EXPECT_TRUE(blocks[1].master.empty());
    EXPECT_EQ(2U, blocks[2].master.front().number);
    EXPECT_EQ(33U, blocks[2].actual.front().number);
}

TEST_F(HunkLinesTest, ALongHiddenStretchIsKeptBehindItsName) {
    std::string const script = "<script>" + std::string(100, 'x') + "\x01</script>";
    MoDiffPairExplanation const explanation = explain("html", script + "1\n", "2\n");
    auto const blocks = MoDiffHunkLines(explanation, 10).of(explanation.hunks().front());
    MoDiffSpan const& span = blocks[1].master.front().spans.front();
    EXPECT_EQ("[Script: 118 bytes]", span.text);
    EXPECT_EQ("<script>" + std::string(100, 'x') + "\\x01</script>", span.folded);
}

} // namespace
