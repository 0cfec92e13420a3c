#include "MoDiffPairComparison.h"
#include "MoSuiteTree.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;

namespace {

class PairComparisonTest : public testing::Test {
protected:
    MoDiffPairResult compare(MoDiffPair const& pair) {
        MoDiffPairComparison::Settings settings = {&m_tree.configuration, {}, nullptr, ""};
        if (!m_reason.empty())
            settings.expectedReason = [this](MoDiffPair const&) { return &m_reason; };
        return MoDiffPairComparison(settings).compare(pair);
    }
    MoDiffPairResult compare(char const* format, std::string const& master, std::string const& actual) {
        return compare(m_tree.add(format, "a." + std::string(format), master, actual));
    }

    MoSuiteTree m_tree;
    std::string m_reason;
};

std::string wordOf(MoDiffPairResult const& result) {
    return ::wordOf(result.outcome);
}

TEST_F(PairComparisonTest, TellsWhatAComparisonShows) {
    MoDiffPairResult const result =
        compare("html", "<p>\r\n<script>123</script>one two</p>", "<p>\n<script>4</script>one 2</p>");
    EXPECT_EQ(wordOf(result), "different");
    EXPECT_EQ(result.detail, "at byte 7 of the normalized texts");
    EXPECT_EQ(result.difference->position, 7U);
    EXPECT_EQ(result.difference->before.master, "<p>one ");
    EXPECT_EQ(result.difference->after.master, "two</p>");
    EXPECT_EQ(result.difference->after.actual, "2</p>");
    EXPECT_EQ(result.bytes->master, 36U);
    EXPECT_EQ(result.hash.actual.size(), 32U);
    std::vector<std::string> patterns;
    for (MoDiffPatternCount const& pattern : result.patterns)
        patterns.push_back(pattern.name + " " + std::to_string(pattern.bytes.master) + " " +
                           std::to_string(pattern.bytes.actual));
    EXPECT_THAT(patterns, ElementsAre("CarriageReturn 1 0", "Newline 1 1", "Script 20 18"));
    EXPECT_EQ(result.hidden->master, 22U);
    EXPECT_EQ(result.hidden->actual, 19U);
}

TEST_F(PairComparisonTest, HashesAreThoseOfTheBytes) {
    // printf abc | xxh128sum
    std::string const ofAbc = "06b05ab6733a618578af5f94892f3950";
    for (char const* const format : {"html", "csv", "prp"}) {
        MoDiffPairResult const result = compare(format, "abc", "abc");
        EXPECT_EQ(result.hash.master, ofAbc) << format;
        EXPECT_EQ(result.hash.actual, ofAbc) << format;
        EXPECT_EQ(result.bytes->actual, 3U) << format;
    }
    EXPECT_EQ(compare("csv", "abc", "abcd").hash.master, ofAbc);
}

TEST_F(PairComparisonTest, PlacesOfTextsWithoutCleansing) {
    MoDiffPairResult const csv = compare("csv", "a\r\nb", "a\r\nc");
    EXPECT_EQ(csv.difference->line, 2U);
    EXPECT_EQ(csv.difference->position, 3U);
    MoDiffPairResult const xml = compare("csi", "a\r\nb", "a\nc");
    EXPECT_EQ(xml.difference->position, 2U);
    EXPECT_EQ(xml.detail, "in line 2");
}

TEST_F(PairComparisonTest, ANulIsNoWholeVerdict) {
    using namespace std::string_literals;
    struct Row {
        std::string master, actual;
        char const* outcome;
        char const* detail;
    };
    for (Row const& row : {Row{"ab\0x"s, "ab\0y"s, "error", "byte 2"}, Row{"a\0"s, "a\0"s, "passed", ""},
                           Row{"abc", "abc\0"s, "error", "byte 3"}, Row{"abc\0"s, "a\0"s, "error", "byte 1"}}) {
        MoDiffPairResult const result = compare("html", row.master, row.actual);
        EXPECT_EQ(wordOf(result), row.outcome) << row.detail;
        EXPECT_THAT(result.detail, HasSubstr(row.detail));
    }
    m_tree.configuration.nul = MoDiffSuiteConfiguration::eNulWarn;
    MoDiffPairResult const warned = compare("html", "ab\0x"s, "ab\0y"s);
    EXPECT_EQ(wordOf(warned), "passed");
    EXPECT_THAT(warned.warnings, ElementsAre(HasSubstr("byte 2")));
}

TEST_F(PairComparisonTest, WarnsBesideTheOutcome) {
    struct Row {
        char const* name;
        std::string master, actual;
        char const* warning;
    };
    std::string const shown(300, 'x');
    std::string const script = "<script>" + std::string(400, '1') + "</script>";
    for (Row const& row :
         {Row{"mark", "\xef\xbb\xbfx", "x", "only the master begins with a byte-order mark"},
          Row{"latin", "x", "yy\xe4", "the actual file holds bytes that are not UTF-8, the first at byte 2"},
          Row{"hidden", shown + script, shown + script, "cleansing hides 58 % of the master and 58 %"},
          Row{"unequal", shown + shown + "<script></script>", shown + shown + script, "very unequal"}}) {
        MoDiffPairResult const result = compare("html", row.master, row.actual);
        ASSERT_EQ(result.warnings.size(), 1U) << row.name;
        EXPECT_THAT(result.warnings[0], HasSubstr(row.warning));
    }
    EXPECT_THAT(compare("html", "\xef\xbb\xbf\xc3\xa4" + shown, "\xef\xbb\xbf\xc3\xb6" + shown).warnings, IsEmpty());
    EXPECT_THAT(compare("html", shown + script, "other").warnings, ElementsAre(HasSubstr("unequal")))
        << "how much is hidden is no matter where nothing passed";
}

TEST_F(PairComparisonTest, WarnsOfOneFileInTwoPlacesAndOfOldFiles) {
    MoDiffPair const& pair = m_tree.add("html", "a.html", "x", "x");
    fs::remove(pair.actual);
    fs::create_hard_link(pair.master, pair.actual);
    fs::last_write_time(pair.actual, fs::file_time_type::clock::now() - std::chrono::hours(25));
    m_tree.configuration.maxAge = std::chrono::hours(24);
    EXPECT_THAT(compare(pair).warnings, ElementsAre("master and actual file are one and the same file",
                                                    "the actual file is older than 1 day"));
    m_tree.configuration.maxAge = std::chrono::hours(26);
    EXPECT_EQ(compare(pair).warnings.size(), 1U);
}

TEST_F(PairComparisonTest, WhatIsThereIsNotMissing) {
    struct Row {
        char const* detail;
        std::function<void(std::string const&)> make;
    };
    Row const rows[] = {
        {"is a directory", [](std::string const& path) { fs::create_directories(path); }},
        {"is a FIFO", [](std::string const& path) { mkfifo(path.c_str(), 0666); }},
        {"no permission", [](std::string const& path) { close(open(path.c_str(), O_CREAT, 0040)); }},
        {"Too many levels of symbolic links", [](std::string const& path) { fs::create_symlink("a.html", path); }},
    };
    for (Row const& row : rows)
        for (bool const isMaster : {true, false}) {
            MoDiffPair const& pair = m_tree.add("html", "a.html", "x", "x");
            std::string const& path = isMaster ? pair.master : pair.actual;
            fs::remove(path);
            row.make(path);
            if (isMaster && access(path.c_str(), R_OK) == 0 && fs::is_regular_file(path))
                continue; // engines ask for its owner's permission only with actual files
            MoDiffPairResult const result = compare(pair);
            EXPECT_EQ(wordOf(result), "error") << row.detail;
            EXPECT_THAT(result.detail, testing::AllOf(HasSubstr(path + ": "), HasSubstr(row.detail)));
            fs::remove(path);
        }
    MoDiffPairResult const tooLong = compare(m_tree.add("html", std::string(300, 'n') + ".html"));
    EXPECT_THAT(tooLong.detail, HasSubstr("File name too long"));
}

TEST_F(PairComparisonTest, AReadErrorIsNoDifference) {
    for (char const* const format : {"csv", "html"})
        for (bool const isMaster : {true, false}) {
            MoDiffPair const& pair = m_tree.add(format, "a." + std::string(format), "x", "x");
            std::string const& path = isMaster ? pair.master : pair.actual;
            fs::remove(path);
            fs::create_symlink("/proc/self/mem", path); // a regular file whose beginning cannot be read
            EXPECT_EQ(wordOf(compare(pair)), "error") << format;
            fs::remove(path);
        }
}

TEST_F(PairComparisonTest, NoDescriptorLeftIsAnError) {
    MoDiffPair const& pair = m_tree.add("html", "a.html", "x", "x");
    MoDiffPairComparison comparison({&m_tree.configuration, {}, nullptr, ""});
    rlimit before;
    getrlimit(RLIMIT_NOFILE, &before);
    rlimit const none = {0, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    MoDiffPairResult const result = comparison.compare(pair);
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(wordOf(result), "error");
    EXPECT_THAT(result.detail, HasSubstr("Too many open files"));
}

TEST_F(PairComparisonTest, MissingFiles) {
    MoDiffPair const& pair = m_tree.add("html", "Sales.html", "x", "x");
    fs::rename(pair.actual, fs::path(pair.actual).parent_path() / "SALES.html");
    MoDiffPairResult const missing = compare(pair);
    EXPECT_EQ(wordOf(missing), "missing");
    EXPECT_EQ(missing.detail, "no actual file");
    EXPECT_THAT(missing.warnings, ElementsAre(HasSubstr("SALES.html")));
    EXPECT_EQ(missing.hash.master.size(), 32U);
    EXPECT_EQ(missing.hash.actual, "");
    fs::remove(pair.master);
    EXPECT_EQ(wordOf(compare(pair)), "error") << "a master that was there when the plan was made";
}

TEST_F(PairComparisonTest, ExpectedDifferences) {
    m_reason = "TRACK-42";
    MoDiffPairResult const different = compare("html", "a", "b");
    EXPECT_EQ(wordOf(different), "expected");
    EXPECT_EQ(different.detail, "expected: TRACK-42; at byte 0 of the normalized texts");
    EXPECT_EQ(wordOf(compare("html", "a", "a")), "unexpectedly-passed");
    EXPECT_EQ(wordOf(compare(m_tree.add("html", "gone.html"))), "error");
    MoTestTree::write("reports/Masters/only.html", "x");
    EXPECT_EQ(wordOf(compare(m_tree.add("html", "only.html"))), "expected");
}

TEST_F(PairComparisonTest, ScriptsDecideOnlyWhenTheyCompared) {
    std::string const both = "import os, sys\nfor name in sys.argv[1:]: open(name).close()\n";
    struct Row {
        std::string script;
        char const* outcome;
        char const* detail;
    };
    Row const rows[] = {
        {both, "passed", ""},
        {"import subprocess, sys\nsys.exit(subprocess.run(['cmp', '-s', *sys.argv[1:]]).returncode)", "passed", ""},
        {both + "print('page 1'); sys.exit(1)", "different", "the script tells differences"},
        {"", "error", "status 0, but opened neither"},
        {both + "sys.exit(2)", "error", "status 2"},
        {both + "print('first'); sys.exit('in vain')", "different", ""},
        {both + "os._exit(7)", "error", "status 7"},
        {both + "raise ValueError('why')", "error", "the script failed: ValueError: why"},
        {"def main(:", "error", "SyntaxError"},
        {"import nothing_of_the_kind", "error", "nothing_of_the_kind"},
        {both + "os.kill(os.getpid(), 11)", "crashed", "SIGSEGV"},
        {both + "bytearray(1 << 46)", "memory", "out of memory"},
        {both + "try:\n    bytearray(1 << 46)\nexcept MemoryError:\n    sys.exit(2)", "memory", "out of memory"},
        {both + "os.close(1); os.close(2); sys.exit(1)", "different", ""},
        {both + "os.kill(os.getppid(), 9); import time; time.sleep(60)", "error", "the python process"},
        {both + "if os.fork() == 0:\n    import time; time.sleep(60)\n", "passed", ""},
    };
    MoDiffPair const& pair = m_tree.add("vmd", "$x `y`.vmd", "x", "x");
    for (Row const& row : rows) {
        MoSuiteTree::writeScript(row.script);
        auto const start = std::chrono::steady_clock::now();
        MoDiffPairResult const result = compare(pair);
        EXPECT_EQ(wordOf(result), row.outcome) << row.script << "\n" << result.detail << "\n" << result.output;
        EXPECT_THAT(result.detail, HasSubstr(row.detail)) << row.script;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << row.script;
    }
}

TEST_F(PairComparisonTest, EachComparisonRunsAScriptAsIfItWereTheFirst) {
    std::string const end = "if __name__ == \"__main__\":\n"
                            "    import sys\n"
                            "    for name in sys.argv[1:]: open(name).close()\n"
                            "    print('end', len(seen)); seen.append(1); sys.exit(len(seen))\n";
    struct Row {
        std::string beginning;
        char const* outcome;
        std::string output;
    };
    MoDiffPair const& pair = m_tree.add("vmd", "a.vmd", "x", "x");
    for (Row const& row :
         {Row{"seen = []\n", "different", "end 0\n"},
          Row{"seen = []\nprint('begin')\n", "different", "begin\nend 0\n"},
          Row{"seen = []\nimport sys\nprint('told', file=sys.stderr)\nsys.exit(1)\n", "different", "told\n"},
          Row{"seen = None\n", "error", ""}, Row{"seen = [\n", "error", ""}}) {
        MoSuiteTree::writeScript(row.beginning + end);
        MoDiffPairComparison comparison({&m_tree.configuration, {}, nullptr, ""});
        for (int round = 0; round < 2; ++round) {
            MoDiffPairResult const result = comparison.compare(pair);
            EXPECT_EQ(wordOf(result), row.outcome) << row.beginning << result.output;
            EXPECT_TRUE(row.output.empty() || result.output == row.output) << row.beginning << result.output;
        }
    }
}

TEST_F(PairComparisonTest, WordsOfAScriptAreKeptInOrderAndClipped) {
    MoSuiteTree::writeScript("import sys\nprint('one', flush=True)\nprint('two', file=sys.stderr)\n"
                             "for number in range(9000): print(number)\nsys.exit(1)");
    MoDiffPairResult const result = compare("vmd", "x", "y");
    EXPECT_THAT(result.output, testing::StartsWith("one\ntwo\n0\n1\n"));
    EXPECT_THAT(result.output, HasSubstr(" bytes are left out here]\n"));
    EXPECT_THAT(result.output, testing::EndsWith("\n8999\n"));
    EXPECT_LT(result.output.size(), 11000U);
}

} // namespace
