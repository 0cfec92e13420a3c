#include "MoDiffGTestListener.h"
#include "MoTestTree.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

namespace {

using Result = std::unique_ptr<MoDiffResult>;

Result normalized(std::string const& master, std::string const& actual, long place) {
    auto const copyOf = [](std::string const& text) {
        return static_cast<char*>(std::memcpy(new char[text.size() + 1], text.c_str(), text.size() + 1));
    };
    return std::make_unique<MoDiffResultFailDiffNormalized>("m", "a", copyOf(master), copyOf(actual), place);
}

TEST(MoDiffGTestListener, makes_each_failure_one_of_the_test_with_place_and_surroundings) {
    MoTestTree const tree;
    MoTestTree::write("m", "x\r\ny,1");
    MoTestTree::write("a", "x\ny,2");
    std::string const many(500, '\x80');
    std::string const line(50, '-');
    std::pair<Result, char const*> const rows[] = {
        {normalized("ab", "ac", 1),
         "a: different at byte 1 of the normalized texts\n  master  ab\n  actual  ac\n           ^"},
        {normalized("", "\\\x1b\n", 0), "\n  master  \n  actual  \\\\\\x1b\\n\n          ^"},
        {normalized("\u00fc\u00e4!", "\u00fc\u00f6!", 3),
         "  master  \u00fc\u00e4!\n  actual  \u00fc\u00f6!\n           ^"},
        {normalized("x\xe4", "x\u200b\xed\xa0\x80", 1), "x\\xe4\n  actual  x\\xe2\\x80\\x8b\\xed\\xa0\\x80\n"},
        {normalized(many + "1", many + "2", 500), "\\x801\n"},
        {normalized(line + "1", line, 50), "\n  master  ----------------------------------------1\n"},
        {std::make_unique<MoDiffResultFailDiff>("m", "a"), "first in line 2\n  master  x\\ny,1\n  actual  x\\ny,2\n"},
        {std::make_unique<MoDiffResultFailFileMissing>("m", "a", "a"), "m and a: the actual file is missing"},
        {std::make_unique<MoDiffResultFail>("m", "a"), "m and a: did not pass"}};
    MoDiffGTestListener listener("suite.cpp", 7);
    testing::TestPartResultArray failures;
    {
        testing::ScopedFakeTestPartResultReporter const reporter(&failures);
        for (auto const& row : rows)
            row.first->notifyListener(listener);
        MoDiffResultPass("m", "a").notifyListener(listener);
    }
    EXPECT_EQ(std::size(rows) + 1, listener.getResultCount());
    EXPECT_EQ(std::size(rows), listener.getFailureCount());
    ASSERT_EQ(static_cast<int>(std::size(rows)), failures.size());
    for (int index = 0; index < failures.size(); ++index) {
        testing::TestPartResult const& failure = failures.GetTestPartResult(index);
        EXPECT_TRUE(failure.nonfatally_failed() && failure.line_number() == 7);
        EXPECT_THAT(failure.message(), testing::HasSubstr(rows[index].second));
    }
}

} // namespace
