#include "MoDiffHunks.h"

#include "MoDiffMarkupSplitter.h"
#include "MoDiffNormalizationPatterns.h"
#include "MoDiffTextDiff.h"
#include "MoGeneratedTexts.h"

#include <gtest/gtest.h>

namespace {

using P = MoDiffNormalizationPatterns;
using Sources = MoDiffBothSides<MoDiffSourceText>;

MoDiffLib::Patterns const kPatterns = {&P::getNewlinePattern(), &P::getScriptPattern(), &P::getChartNamePattern()};

std::vector<MoDiffPlacedChange> placed(Sources const& sources) {
    return MoDiffHunks::place(
        sources, MoDiffTextDiff::find(sources.master.text(), sources.actual.text(), MoDiffMarkupSplitter()));
}

/// The length of the character at an index, by the table of well-formed UTF-8.
std::size_t slowLength(std::string_view text, std::size_t at) {
    struct Row {
        unsigned char first[2], second[2];
        std::size_t length;
    };
    static Row const rows[] = {{{0xC2, 0xDF}, {0x80, 0xBF}, 2}, {{0xE0, 0xE0}, {0xA0, 0xBF}, 3},
                               {{0xE1, 0xEC}, {0x80, 0xBF}, 3}, {{0xED, 0xED}, {0x80, 0x9F}, 3},
                               {{0xEE, 0xEF}, {0x80, 0xBF}, 3}, {{0xF0, 0xF0}, {0x90, 0xBF}, 4},
                               {{0xF1, 0xF3}, {0x80, 0xBF}, 4}, {{0xF4, 0xF4}, {0x80, 0x8F}, 4}};
    auto const isIn = [&](std::size_t index, unsigned char low, unsigned char high) {
        auto const byte = index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
        return byte >= low && byte <= high;
    };
    for (Row const& row : rows) {
        bool fits = isIn(at, row.first[0], row.first[1]) && isIn(at + 1, row.second[0], row.second[1]);
        for (std::size_t i = 2; i < row.length; ++i)
            fits = fits && isIn(at + i, 0x80, 0xBF);
        if (fits)
            return row.length;
    }
    return 1;
}

MoDiffPlace slowPlace(std::string_view file, std::size_t index) {
    MoDiffPlace place = {1, 1};
    for (std::size_t at = 0, length = 0; at < file.size() && at + (length = slowLength(file, at)) <= index;
         at += length)
        place = file[at] == '\n' ? MoDiffPlace{place.line + 1, 1} : MoDiffPlace{place.line, place.column + 1};
    return place;
}

/// By leaving out what is hidden byte by byte.
std::size_t slowFileIndex(MoDiffSourceText const& source, std::size_t textIndex) {
    std::vector<bool> hidden(source.file().size());
    for (MoDiffSourceText::Stretch const& stretch : source.hidden())
        for (std::size_t i = 0; i < stretch.length; ++i)
            hidden[stretch.begin + i] = true;
    std::size_t at = 0;
    for (std::size_t seen = 0; at < hidden.size(); ++at)
        if (!hidden[at] && seen++ == textIndex)
            break;
    return at;
}

void checkSide(MoDiffSourceText const& source, MoDiffRange text, MoDiffRange file, MoDiffPlace place) {
    if (!text.isEmpty()) {
        ASSERT_EQ(slowFileIndex(source, text.begin), file.begin);
        ASSERT_EQ(slowFileIndex(source, text.end - 1) + 1, file.end);
    } else { // between its neighbours
        ASSERT_LE(file.begin, slowFileIndex(source, text.begin));
        ASSERT_TRUE(text.begin == 0 || file.begin > slowFileIndex(source, text.begin - 1));
    }
    MoDiffPlace const slow = slowPlace(source.file(), file.begin);
    ASSERT_EQ(slow.line, place.line);
    ASSERT_EQ(slow.column, place.column);
}

bool holds(MoDiffRange lines, MoDiffRange change) {
    return lines.begin <= change.begin && change.end <= lines.end;
}

/// Whole lines in order, every change in one of them, nothing twice.
void checkHunks(Sources const& sources, std::vector<MoDiffPlacedChange> const& changes) {
    std::size_t change = 0;
    MoDiffBothSides<std::size_t> end = {0, 0};
    auto const isLineBegin = [](std::string_view file, std::size_t at) {
        return at == 0 || at == file.size() || file[at - 1] == '\n';
    };
    for (MoDiffHunk const& hunk : MoDiffHunks::find(sources, changes, 2)) {
        ASSERT_LE(end.master, hunk.before.master.begin);
        ASSERT_LE(end.actual, hunk.before.actual.begin);
        for (MoDiffSegment const& segment : hunk.segments) {
            ASSERT_EQ(change, segment.firstChange);
            for (; change < segment.endChange; ++change) {
                ASSERT_TRUE(holds(segment.lines.master, changes[change].file.master));
                ASSERT_TRUE(holds(segment.lines.actual, changes[change].file.actual));
            }
            ASSERT_TRUE(isLineBegin(sources.master.file(), segment.lines.master.begin));
            ASSERT_TRUE(isLineBegin(sources.actual.file(), segment.lines.actual.end));
            ASSERT_EQ(slowPlace(sources.master.file(), segment.lines.master.begin).line, segment.firstLine.master);
            ASSERT_EQ(slowPlace(sources.actual.file(), segment.lines.actual.begin).line, segment.firstLine.actual);
        }
        end = {hunk.after.master.end, hunk.after.actual.end};
    }
    ASSERT_EQ(changes.size(), change);
}

TEST(HunksTest, PlacesAreThoseOfTheFiles) {
    MoGeneratedTexts generated(3);
    std::size_t changes = 0;
    for (unsigned round = 0; round < 20000; ++round) {
        auto const [master, actual] = generated.pair(generated.below(30), 1 + generated.below(4));
        Sources const sources = {MoDiffSourceText(master, kPatterns), MoDiffSourceText(actual, kPatterns)};
        std::vector<MoDiffPlacedChange> const all = placed(sources);
        for (MoDiffPlacedChange const& one : all) {
            checkSide(sources.master, one.change.ranges.master, one.file.master, one.place.master);
            checkSide(sources.actual, one.change.ranges.actual, one.file.actual, one.place.actual);
        }
        checkHunks(sources, all);
        if (HasFatalFailure())
            FAIL() << "round " << round << "\n" << master << "\n----\n" << actual;
        changes += all.size();
    }
    EXPECT_GT(changes, 20000U);
}

struct Row {
    char const* name;
    char const* master;
    char const* actual;
    char const* expected; ///< lines of a hunk: context of the master, - and + lines, "@" between hunks
};

Row const kRows[] = {
    {"word_in_a_line", "a\nb\nc\nd\n", "a\nx\nc\nd\n", " a\n-b\n+x\n c\n"},
    {"line_more", "a\nb\n", "a\nnew\nb\n", " a\n+new\n b\n"},
    {"line_more_at_the_end", "a\n", "a\nnew\n", " a\n+new\n"},
    {"line_less_at_the_begin", "old\na\n", "a\n", "-old\n a\n"},
    {"hidden_line_ends_differ", "<p>a</p>\n<p>b</p>\n", "<p>a</p><p>x</p>\n",
     "-<p>a</p>\n-<p>b</p>\n+<p>a</p><p>x</p>\n"},
    {"line_end_less", "a\nb\nc\n", "ab\nc\n", "-a\n-b\n+ab\n c\n"},
    {"line_ends_elsewhere", "<p>a</p><p>b</p>\n<p>c</p>\n", "<p>a</p>\n<p>x</p><p>c</p>\n",
     "-<p>a</p><p>b</p>\n-<p>c</p>\n+<p>a</p>\n+<p>x</p><p>c</p>\n"},
    {"part_of_a_line_more", "<p>a</p>\n<p>b</p>\n", "<p>a</p><i>n</i>\n<p>b</p>\n",
     "-<p>a</p>\n+<p>a</p><i>n</i>\n <p>b</p>\n"},
    {"far_apart", "a\n1\n2\n3\nb\n", "x\n1\n2\n3\ny\n", "-a\n+x\n 1\n@ 3\n-b\n+y\n"},
    {"near", "a\n1\n2\nb\n", "x\n1\n2\ny\n", "-a\n+x\n 1\n 2\n-b\n+y\n"},
};

std::string withSign(char sign, std::string_view lines) {
    std::string result;
    for (std::size_t at = 0; at < lines.size(); at = MoDiffLines::end(lines, at))
        result.append(1, sign).append(lines.substr(at, MoDiffLines::end(lines, at) - at));
    return result;
}

TEST(HunksTest, HoldWholeLinesWithContext) {
    for (Row const& row : kRows) {
        bool const isMarkup = std::string(row.master).find('<') != std::string::npos;
        MoDiffLib::Patterns const patterns = isMarkup ? kPatterns : MoDiffLib::Patterns();
        Sources const sources = {MoDiffSourceText(row.master, patterns), MoDiffSourceText(row.actual, patterns)};
        std::string shown;
        std::string_view const master = sources.master.file();
        for (MoDiffHunk const& hunk : MoDiffHunks::find(sources, placed(sources), 1)) {
            shown += shown.empty() ? "" : "@";
            std::size_t end = hunk.before.master.begin;
            for (MoDiffSegment const& segment : hunk.segments) {
                shown += withSign(' ', master.substr(end, segment.lines.master.begin - end));
                shown += withSign('-', segment.lines.master.of(master));
                shown += withSign('+', segment.lines.actual.of(sources.actual.file()));
                end = segment.lines.master.end;
            }
            shown += withSign(' ', hunk.after.master.of(master));
        }
        EXPECT_EQ(row.expected, shown) << row.name;
    }
}

} // namespace
