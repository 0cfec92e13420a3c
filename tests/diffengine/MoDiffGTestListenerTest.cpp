#include "MoDiffGTestListener.h"
#include "MoTestTree.h"
#include "libMoDiffEngine.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

namespace {

char* copyOf(std::string const& text) {
    return static_cast<char*>(std::memcpy(new char[text.size() + 1], text.c_str(), text.size() + 1));
}

std::string messageOf(MoDiffListener& listener, MoDiffResult const& result) {
    testing::TestPartResultArray failures;
    {
        testing::ScopedFakeTestPartResultReporter const reporter(&failures);
        result.notifyListener(listener);
    }
    EXPECT_EQ(1, failures.size());
    EXPECT_TRUE(failures.size() > 0 && failures.GetTestPartResult(0).nonfatally_failed());
    return failures.size() > 0 ? failures.GetTestPartResult(0).message() : "";
}

TEST(MoDiffGTestListener, tells_place_and_surroundings_escaped) {
    struct {
        std::string master, actual;
        long place;
        char const* message;
    } const rows[] = {
        {"ab", "ac", 1, "byte 1 of the normalized texts\n  master  ab\n  actual  ac\n           ^"},
        {"a", "a\n", 1, "\n  master  a\n  actual  a\\n\n           ^"},
        {"", "\\\x1b", 0, "\n  master  \n  actual  \\\\\\x1b\n          ^"},
        {"\u00fc\u00e4!", "\u00fc\u00f6!", 3, "\n  master  \u00fc\u00e4!\n  actual  \u00fc\u00f6!\n           ^"},
        {"x\xe4", "x\xf6", 1, "\n  master  x\\xe4\n  actual  x\\xf6\n           ^"},
        {"\u200b", "\xc0\x80\xed\xa0\x80", 0, "master  \\xe2\\x80\\x8b\n  actual  \\xc0\\x80\\xed\\xa0\\x80\n"},
        {std::string(500, '\x80') + "1", std::string(500, '\x80') + "2", 500, "\\x801\n"},
        {std::string(50, '-') + "1", std::string(50, '-') + "2", 50,
         "\n  master  ----------------------------------------1"},
        {"a", "b", 77, "\n  master  a\n"},
    };
    for (auto const& row : rows) {
        MoDiffGTestListener listener;
        MoDiffResultFailDiffNormalized const result("m", "a", copyOf(row.master), copyOf(row.actual), row.place);
        EXPECT_THAT(messageOf(listener, result), testing::HasSubstr(row.message));
    }
}

TEST(MoDiffGTestListener, makes_each_result_of_engines_an_expectation) {
    MoTestTree const tree;
    for (auto const& [name, text] : {std::pair("1", "a\r\nb,1"), std::pair("2", "a\nb,1"), std::pair("3", "x,\x01")})
        MoTestTree::write(std::string("Masters/CSV/r") + name + ".csv", text);
    MoTestTree::write("../webcontent/v5DebugCSV/r1.csv", "a\r\nb,1");
    MoTestTree::write("../webcontent/v5DebugCSV/r2.csv", "a\nb,2");
    MoDiffCsvFileEngine engine(nullptr);
    MoDiffGTestListener listener("suite.cpp", 7);
    testing::TestPartResultArray failures;
    {
        testing::ScopedFakeTestPartResultReporter const reporter(&failures);
        engine.verifyOutput({&listener}, "r");
        engine.verifyOutput({&listener}, "none");
    }
    EXPECT_EQ(3U, listener.getResultCount());
    EXPECT_EQ(2U, listener.getFailureCount());
    ASSERT_EQ(2, failures.size());
    EXPECT_STREQ("suite.cpp", failures.GetTestPartResult(0).file_name());
    EXPECT_EQ(7, failures.GetTestPartResult(0).line_number());
    EXPECT_THAT(failures.GetTestPartResult(0).message(),
                testing::HasSubstr("r2.csv: different, first in line 2\n  master  a\\nb,1\n  actual  a\\nb,2\n"));
    EXPECT_THAT(failures.GetTestPartResult(1).message(), testing::HasSubstr("the actual file is missing"));
}

} // namespace
