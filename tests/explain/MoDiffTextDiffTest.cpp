#include "MoDiffTextDiff.h"

#include "MoDiffCsvSplitter.h"
#include "MoDiffMarkupSplitter.h"
#include "MoDiffSequenceDiff.h"
#include "MoGeneratedTexts.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>

namespace {

using Changes = std::vector<MoDiffChange>;

MoDiffMarkupSplitter const kMarkup;

/// The master with the changes made. Fails the test when they are not in order or what they leave differs.
std::string applied(Changes const& changes, std::string const& master, std::string const& actual) {
    std::string result;
    std::size_t at = 0;
    for (MoDiffChange const& change : changes) {
        MoDiffRange const& from = change.ranges.master;
        MoDiffRange const& to = change.ranges.actual;
        EXPECT_LE(at, from.begin);
        EXPECT_FALSE(from.isEmpty() && to.isEmpty());
        result += master.substr(at, from.begin - at);
        EXPECT_EQ(to.begin, result.size());
        result += to.of(actual);
        at = from.end;
    }
    return result + master.substr(at);
}

/// Changes as "[removed|added]" within the text.
std::string shown(std::string const& master, std::string const& actual, MoDiffSplitter const& splitter) {
    std::string result;
    std::size_t at = 0;
    for (MoDiffChange const& change : MoDiffTextDiff::find(master, actual, splitter)) {
        result.append(master, at, change.ranges.master.begin - at);
        result.append("[").append(change.ranges.master.of(master)).append("|");
        result.append(change.ranges.actual.of(actual)).append("]");
        at = change.ranges.master.end;
    }
    return result.append(master, at, std::string::npos);
}

struct Row {
    char const* name;
    char const* master;
    char const* actual;
    char const* expected;
};

Row const kMarkupRows[] = {
    {"equal", "<p>a</p>", "<p>a</p>", "<p>a</p>"},
    {"empty_master", "", "new", "[|new]"},
    {"empty_actual", "old", "", "[old|]"},
    {"word", "one two three", "one 2 three", "one [two|2] three"},
    {"number_with_groups", "<td>13,156,637.20</td>", "<td>13,156,638.20</td>",
     "<td>[13,156,637.20|13,156,638.20]</td>"},
    {"footer", "<p>Page 1 of 3</p>", "<p>Page 1/3</p>", "<p>Page 1[ of |/]3</p>"},
    {"neighbouring_words_become_one", "a red fox ran", "a blue dog ran", "a [red fox|blue dog] ran"},
    {"words_far_apart_stay_two", "red and fox", "blue and dog", "[red|blue] and [fox|dog]"},
    {"attribute", "<td class=\"a\" width=\"10\">x", "<td class=\"a\" width=\"12\">x",
     "<td class=\"a\" width=\"[10|12]\">x"},
    {"another_tag", "<b>x", "<td width=\"9\" class=\"figure\">x", "[<b>|<td width=\"9\" class=\"figure\">]x"},
    {"row_begins_at_its_tag", "<t><tr><td>a</td></tr><tr><td>b</td></tr></t>",
     "<t><tr><td>a</td></tr><tr><td>n</td></tr><tr><td>b</td></tr></t>",
     "<t><tr><td>a</td></tr>[|<tr><td>n</td></tr>]<tr><td>b</td></tr></t>"},
    {"line_begins_at_its_begin", "x\ny a\ny b\n", "x\ny a\ny n\ny b\n", "x\ny a\n[|y n\n]y b\n"},
    {"signs", "a -5 b", "a 5 b", "a [-5|5] b"},
    {"date_is_no_sign", "2023-01-02", "2023-01-03", "2023-01-[02|03]"},
    {"letters_of_two_bytes", "gr\xC3\xBC\xC3\x9F", "gr\xC3\xBCn", "[gr\xC3\xBC\xC3\x9F|gr\xC3\xBCn]"},
    {"not_utf8", "caf\xE9 x", "caf\xE8 x", "[caf\xE9|caf\xE8] x"},
    {"return_belongs_to_the_line_end", "a\r\nb", "a\nb", "a[\r\n|\n]b"},
    {"unclosed_tag", "a <b c", "a <b d", "a <b [c|d]"},
};

Row const kCsvRows[] = {
    {"field", "a,b\n1,2\n", "a,b\n1,3\n", "a,b\n1,[2|3]\n"},
    {"separator_in_quotes", "\"x,y\",1\n", "\"x,z\",1\n", "\"x,[y|z]\",1\n"},
    {"line_end_in_quotes", "\"x\ny\",1\n2,2\n", "\"x\ny\",1\n3,2\n", "\"x\ny\",1\n[2|3],2\n"},
    {"neighbouring_fields_stay_two", "1,2,3\n", "8,9,3\n", "[1|8],[2|9],3\n"},
    {"doubled_quotes", "\"a\"\"b\",1\n", "\"a\"\"b\",2\n", "\"a\"\"b\",[1|2]\n"},
    {"record_more", "1,2\n3,4\n", "1,2\n5,6\n3,4\n", "1,2\n[|5,6\n]3,4\n"},
};

TEST(TextDiffTest, ShowsWhatAReaderWouldTell) {
    for (Row const& row : kMarkupRows)
        EXPECT_EQ(row.expected, shown(row.master, row.actual, kMarkup)) << row.name;
    for (Row const& row : kCsvRows)
        EXPECT_EQ(row.expected, shown(row.master, row.actual, MoDiffCsvSplitter(','))) << row.name;
}

/// Limits so low that every way through grains is taken.
MoDiffTextDiff::Limits const kLimits[] = {{}, {2000, 0}, {1, 0}, {100'000, 400}, {100'000, 24}, {100'000, 8}};

TEST(TextDiffTest, ChangesTurnTheMasterIntoTheActual) {
    MoGeneratedTexts generated(1);
    MoDiffCsvSplitter const csv(',');
    for (unsigned round = 0; round < 4000; ++round) {
        auto const [master, related] = generated.pair(generated.below(60), generated.below(6));
        std::string const actual = round % 8 == 0 ? generated.text(generated.below(60)) : related;
        MoDiffTextDiff::Limits const& limits = kLimits[round % std::size(kLimits)];
        for (MoDiffSplitter const* splitter :
             {static_cast<MoDiffSplitter const*>(&kMarkup), static_cast<MoDiffSplitter const*>(&csv)}) {
            Changes const changes = MoDiffTextDiff::find(master, actual, *splitter, limits);
            ASSERT_EQ(actual, applied(changes, master, actual)) << "round " << round;
            ASSERT_EQ(master == actual, changes.empty());
        }
    }
}

/// Lengths of the shortest edit script by the table of all prefixes.
std::size_t leastEdits(MoDiffSequenceDiff::Sequence const& first, MoDiffSequenceDiff::Sequence const& second) {
    std::vector<std::size_t> row(second.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < first.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < second.size(); ++j) {
            std::size_t const edits = first[i] == second[j] ? diagonal : std::min(row[j], row[j + 1]) + 1;
            diagonal = row[j + 1];
            row[j + 1] = edits;
        }
    }
    return row.back();
}

TEST(SequenceDiffTest, TakesAsFewEditsAsPossible) {
    std::mt19937 random(7);
    for (unsigned round = 0; round < 3000; ++round) {
        MoDiffSequenceDiff::Sequence first(random() % 40);
        MoDiffSequenceDiff::Sequence second(random() % 40);
        unsigned const letters = 1 + round % 6;
        for (auto* sequence : {&first, &second})
            for (std::uint32_t& element : *sequence)
                element = static_cast<std::uint32_t>(random() % letters);
        MoDiffSequenceDiff diff(first, second);
        std::uint64_t work = 1'000'000;
        ASSERT_TRUE(diff.run(work, MoDiffSequenceDiff::eGiveUp));
        MoDiffSequenceDiff::Sequence kept[2];
        for (std::size_t i = 0; i < first.size(); ++i)
            if (!diff.isDeleted(i))
                kept[0].push_back(first[i]);
        for (std::size_t i = 0; i < second.size(); ++i)
            if (!diff.isInserted(i))
                kept[1].push_back(second[i]);
        ASSERT_EQ(kept[0], kept[1]);
        ASSERT_EQ(leastEdits(first, second), first.size() + second.size() - kept[0].size() - kept[1].size());
    }
}

/// Some hundred thousand bytes in lines, every n-th number another one in the actual.
std::pair<std::string, std::string> tables(std::size_t lines, std::size_t everyNth) {
    std::pair<std::string, std::string> texts;
    for (std::size_t line = 0; line < lines; ++line) {
        std::string const begin = "<tr><td>Item " + std::to_string(line * 7919 % 1000) + "</td><td>";
        texts.first += begin + std::to_string(line) + "</td></tr>\n";
        texts.second += begin + std::to_string(line % everyNth == 0 ? line + 1000000 : line) + "</td></tr>\n";
    }
    return texts;
}

TEST(TextDiffTest, GoesCoarserWhereLimitsAreMetAndSaysSo) {
    auto const [master, actual] = tables(3000, 10);
    MoDiffTextDiff::Limits const lowMemory = {50'000'000, 60'000}; // bytes: enough for lines, not for tokens of all
    Changes const byLines = MoDiffTextDiff::find(master, actual, kMarkup, lowMemory);
    EXPECT_EQ(300U, byLines.size()); // refined again
    EXPECT_EQ(MoDiffGrain::eWhole, MoDiffTextDiff::find(master, actual, kMarkup, {1000, 8}).front().grain);
    auto const isFine = [](MoDiffChange const& change) { return change.grain <= MoDiffGrain::eTokens; };
    EXPECT_TRUE(std::all_of(byLines.begin(), byLines.end(), isFine));
    Changes const every = MoDiffTextDiff::find(tables(8000, 1).first, tables(8000, 1).second, kMarkup);
    EXPECT_EQ(8000U, every.size()); // a number in each line, found although the shortest way is too far
}

} // namespace
