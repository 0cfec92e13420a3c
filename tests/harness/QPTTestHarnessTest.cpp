#include "QPTScript.h"

#include "KLTAssertError.h"
#include "KLTFmDir.h"

#include <vector>

namespace {

using Harness = QPTTestHarness;

/// A line of the worked example, the levels that show it, and where: in the log file, on the console.
struct ExampleLine {
    char const* levels;
    char const* places;
    char const* text;
};

ExampleLine const kExample[] = {
    {"0234", "lc", "==========================================================================="},
    {"01234", "lc", "= Trelvo Test Harness v1.2                                                ="},
    {"0234", "lc", "=-------------------------------------------------------------------------="},
    {"034", "lc", "= Test Description:                                    Nightly regression ="},
    {"0234", "c", "= Log File:                                                   results.qpr ="},
    {"01234", "lc", "=     Test Started: (24 characters of time)                              ="},
    {"0234", "lc", "==========================================================================="},
    {"234", "l", "------------------------- Start Test: OpenReport"},
    {"34", "l", "Opens the sales report"},
    {"234", "l", "PASSED: Check File: header"},
    {"1234", "l", ">>  FAILED: Check File: body"},
    {"34", "l", "Offset: 0X8 (8)"},
    {"34", "l", "  actual:  33  0A                                                             3."},
    {"34", "l", "expected:  32  0A                                                             2."},
    {"34", "l", "           ^^                                                                 ^ "},
    {"34", "l", "2 bytes compared.  A total of 1 bytes unequal"},
    {"34", "l", ""},
    {"234", "l", ""},
    {"234", "l", "------------------------- End Test: OpenReport"},
    {"234", "l", ""},
    {"234", "l", "------------------------- Start Test: SaveAsPdfWithBookmarks"},
    {"1234", "l", ">>  WARNED: Check Memory: pageBuffer"},
    {"34", "l", "Offset: 0 (0)"},
    {"34", "l", "  actual:  41  42  58  44                                                     ABXD"},
    {"34", "l", "expected:  41  42  43  44                                                     ABCD"},
    {"34", "l", "                   ^^                                                           ^ "},
    {"34", "l", "4 bytes compared.  A total of 1 bytes unequal"},
    {"234", "l", ""},
    {"234", "l", "------------------------- End Test: SaveAsPdfWithBookmarks"},
    {"234", "l", ""},
    {"1234", "l", ">> Script Error: logCheckFail() called outside test script"},
    {"1", "lc", "= Test Finished: (24 characters of time)           TEST RESULT:   >> FAIL ="},
    {"234", "lc", "==========================================================================="},
    {"234", "lc", "= Test Finished: (24 characters of time)                                 ="},
    {"234", "lc", "=-------------------------------------------------------------------------="},
    {"2", "lc", "=                      Script  Checks  Checks  Checks               TEST  ="},
    {"2", "lc", "=                      Errors  Failed  Passed  Warned              RESULT ="},
    {"34", "lc", "= Test                 Script  Checks  Checks  Checks               TEST  ="},
    {"34", "lc", "= Case                 Errors  Failed  Passed  Warned              RESULT ="},
    {"234", "lc", "=-------------------------------------------------------------------------="},
    {"34", "lc", "= OpenReport                0       1       1       0             >> FAIL ="},
    {"34", "lc", "= SaveAsPdfWithBookm        0       0       2       1                PASS ="},
    {"34", "lc", "= Other                     1       0       0       0             >> FAIL ="},
    {"234", "lc", "=-------------------------------------------------------------------------="},
    {"234", "lc", "= TOTALS                    1       1       3       1             >> FAIL ="},
    {"234", "lc", "==========================================================================="},
};

std::string exampleAt(int level, char place) {
    std::string text;
    for (ExampleLine const& line : kExample)
        if (std::string(line.levels).find(static_cast<char>('0' + level)) != std::string::npos &&
            std::string(line.places).find(place) != std::string::npos)
            text += std::string(line.text) + "\n";
    return text;
}

TEST(QPTTestHarness, worked_example_comes_out_at_every_level) {
    for (int level = eLogNone; level <= eLogDetailed; ++level) {
        SCOPED_TRACE(level);
        QPTScript script(static_cast<eLogLevel>(level));
        QPTScript::write("expected", "Total: 42\n");
        QPTScript::write("actual", "Total: 43\n");
        QPTTestHarness& harness = *script.harness;
        EXPECT_EQ(1, harness.openLog(nullptr, 0));
        harness.startScript("Nightly regression", 0);
        harness.startTest("OpenReport", "Opens the sales report");
        EXPECT_EQ(1, harness.checkNamedFile("header", "expected", "expected", 0));
        EXPECT_EQ(0, harness.checkNamedFile("body", "actual", "expected", 0));
        EXPECT_EQ(0, harness.endTest());
        harness.startTest("SaveAsPdfWithBookmarks", nullptr);
        EXPECT_EQ(2, harness.logCheckPass() + harness.logCheckPass());
        EXPECT_EQ(0, harness.checkNamedMemoryWarn("pageBuffer", "ABXD", "ABCD", 4));
        harness.endTest();
        EXPECT_EQ(0, harness.logCheckFail());
        EXPECT_EQ(level == eLogNone ? 1 : 0, script.end(1));
        EXPECT_EQ(exampleAt(level, 'l'), QPTScript::masked(QPTScript::read("results.qpr")));
        EXPECT_EQ(exampleAt(level, 'c'), script.console());
    }
}

TEST(QPTTestHarness, log_is_emptied_or_continued_and_one_that_fails_only_loses_its_lines) {
    struct Row {
        char const* name;
        int append;
        int opened;
        char const* content; // null: not a file to read back
    } const rows[] = {{"log", 1, 1, "old\nline\n"}, {"log", 0, 1, "line\n"},    {"fresh", 1, 1, "line\n"},
                      {"dir", 0, 0, nullptr},       {"no/way", 1, 0, "(none)"}, {"/dev/full", 0, 1, nullptr}};
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        QPTScript script;
        std::filesystem::create_directory("dir");
        QPTScript::write("log", "old\n");
        EXPECT_EQ(row.opened, script.harness->openLog(row.name, row.append));
        EXPECT_STREQ(row.name, script.harness->getLogFilename());
        script.harness->writeLog("line\n", eLogNormal, 0);
        EXPECT_EQ(row.opened, script.harness->closeLog());
        EXPECT_EQ(row.content ? row.content : "", row.content ? QPTScript::read(row.name) : "");
        EXPECT_EQ("", script.console());
        EXPECT_EQ(0, script.harness->closeLog());
        script.harness->writeLog("line\n", eLogNormal, 0);
        EXPECT_EQ("line\n", script.console());
        script.harness->openLog(row.name, 1);
        script.startTest();
        script.harness->checkNamedMemory(std::string(100000, 'n').c_str(), "a", "a", 1, 0);
        EXPECT_EQ(1, script.end(0));
    }
}

TEST(QPTTestHarness, level_change_is_logged_at_any_level_once_there_is_a_stream) {
    QPTScript script(eLogNone);
    script.harness->setLogLevel(eLogConcise);
    script.harness->logOstream();
    int previous = eLogConcise;
    for (int const level : {2, 0, 1, 2, 3, 4, 7, -1})
        EXPECT_EQ(std::exchange(previous, level), script.harness->setLogLevel(static_cast<eLogLevel>(level)));
    script.harness->writeLog("x", eLogNone, 0);
    EXPECT_EQ("Set Log Level: None\nSet Log Level: Minimal\nSet Log Level: Concise\nSet Log Level: Normal\n"
              "Set Log Level: Detailed\nSet Log Level: \nSet Log Level: \n",
              script.console());
}

TEST(QPTTestHarness, misuse_is_one_logged_and_counted_script_error) {
    struct Row {
        bool inScript;
        void (*call)(Harness&);
        char const* message;
    } const rows[] = {
        {true, [](Harness& h) { h.startScript("again", 0); }, "startScript() called inside test script"},
        {false, [](Harness& h) { h.startTest("t", "d"); }, "startTest() called outside test script"},
        {true, [](Harness& h) { h.endTest(); }, "endTest() called outside test case"},
        {true, [](Harness& h) { EXPECT_EQ(0, h.logCheckPass()); }, "logCheckPass() called outside test script"},
        {true, [](Harness& h) { EXPECT_EQ(0, h.logCheckWarn()); }, "logCheckWarn() called outside test script"},
        {false, [](Harness&) {}, "endScript() called outside test script"},
    };
    for (Row const& row : rows) {
        QPTScript script(eLogMinimal);
        if (row.inScript)
            script.harness->startScript(nullptr, 0);
        script.console();
        row.call(*script.harness);
        EXPECT_TRUE(script.harness->getTestCases().empty());
        EXPECT_EQ(0, script.end(0));
        EXPECT_THAT(script.console(), testing::StartsWith(std::string(">> Script Error: ") + row.message + "\n"));
    }
}

TEST(QPTTestHarness, frames_keep_their_columns_until_something_is_too_wide) {
    QPTScript script;
    script.harness->startScript(nullptr, 0);
    EXPECT_THAT(script.console(), testing::HasSubstr("\n= Test Description: None" + std::string(50, ' ') + "=\n= "));
    std::ostringstream out;
    out.width(90);
    script.harness->writeBanner(out, std::string(54, 'd').c_str());
    EXPECT_THAT(out.str(), testing::StartsWith("====="));
    EXPECT_THAT(out.str(), testing::HasSubstr("\n= Test Description: " + std::string(54, 'd') +
                                              " =\n= Log File: None" + std::string(58, ' ') + "=\n"));
    for (char const* const name : {"a", "exactly 18 letters", "exactly 18 letters+", ""})
        script.harness->startTest(name, nullptr); // the one before is replaced and keeps its row
    script.harness->logCheckWarn();
    script.harness->setCurrentTest(script.harness->getTestCases().front());
    script.harness->getCurrentTest()->setPassedCount(123456);
    script.harness->logScriptError(nullptr);
    script.console();
    EXPECT_EQ(1, script.harness->writeSummary(std::cout));
    EXPECT_THAT(script.console(),
                testing::HasSubstr("\n= a                         1       0   123456       0             >> FAIL =\n"
                                   "= exactly 18 letters        0       0       0       0                PASS =\n"
                                   "= exactly 18 letters        0       0       0       0                PASS =\n"
                                   "=                           0       0       0       1                PASS =\n"
                                   "= Other                     0       0       0       0                PASS =\n"));
}

TEST(QPTTestHarness, ended_script_leaves_a_fresh_harness_and_a_test_needs_a_name) {
    setenv("QPT_EFFECTIVE_WORKING_DIR", "/srv/reports", 1);
    {
        QPTScript script;
        unsetenv("QPT_EFFECTIVE_WORKING_DIR");
        EXPECT_EQ("/srv/reports", KLTFmDir::getEffectiveWorkingDir());
        script.harness->openLog("log", 0);
        script.startTest();
        EXPECT_THROW(script.harness->startTest(nullptr, nullptr), KLTAssertError);
        EXPECT_EQ("t", script.harness->getCurrentTest()->getTestCase());
        EXPECT_EQ(1U, script.harness->getTestCases().size());
    }
    Harness& fresh = *Harness::instance();
    EXPECT_STREQ("", fresh.getLogFilename());
    EXPECT_EQ(eLogNone, fresh.getLogLevel());
    EXPECT_EQ(&std::cout, &fresh.logOstream());
    EXPECT_EQ(1, fresh.endScript(0));
}

/// A console that says in the log what it is given.
struct EchoingConsole : std::stringbuf {
    std::streamsize xsputn(char const* text, std::streamsize count) override {
        if (!isEcho) {
            isEcho = true;
            Harness::instance()->writeLog("echo:", eLogNormal, 0);
            isEcho = false;
        }
        return std::stringbuf::xsputn(text, count);
    }
    bool isEcho = false;
};

TEST(QPTTestHarness, a_console_may_write_to_the_log_itself) {
    QPTScript script;
    EchoingConsole echoing;
    std::streambuf* const console = std::cout.rdbuf(&echoing);
    script.harness->writeLog("line\n", eLogNormal, 0);
    script.harness->logScriptError("error");
    std::cout.rdbuf(console);
    EXPECT_EQ("echo:line\necho:error\n", echoing.str());
}

TEST(QPTTestHarness, a_name_ends_at_its_NUL_and_its_line_does_not) {
    QPTScript script;
    script.startTest();
    script.harness->getCurrentTest()->setTestCase(std::string("t\0u", 3));
    script.harness->endTest();
    EXPECT_EQ("\n------------------------- End Test: t\n\n", script.console());
}

int const kThreads = 8;
int const kRounds = 50;

template<typename Work>
void inThreads(Work work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&, name = std::string(16, static_cast<char>('0' + i))] {
            for (int round = 0; round < kRounds; ++round)
                work(name.c_str());
        });
    for (std::thread& thread : threads)
        thread.join();
}

/// The blocks that a thread writes.
std::vector<std::string> blocksOf(char digit) {
    std::string const name(16, digit);
    std::string const pad(60 + 5, ' ');
    std::string hex;
    std::string marks;
    for (int i = 0; i < 16; ++i) {
        hex += std::string("  3") + digit;
        marks += "  ^^";
    }
    return {">>  FAILED: Check File: " + name + "\nOffset: 0X1 (1)\n  actual:  33" + pad + "3\nexpected:  32" + pad +
                "2\n           ^^" + pad + "^\n1 bytes compared.  A total of 1 bytes unequal\n\n",
            ">>  WARNED: Check Memory: " + name + "\nOffset: 0 (0)\n  actual:  (null)     \nexpected:" + hex +
                "     " + name + "\n         " + marks +
                "     ^^^^^^^^^^^^^^^^\n16 bytes compared.  A total of 16 bytes unequal\n",
            "PASSED: Check Memory: " + name + "\n"};
}

TEST(QPTTestHarness, ThreadsNeverInterleaveTheirBlocksAndEveryCountIsExact) {
    QPTScript script;
    Harness& harness = *script.harness;
    QPTScript::write("expected", "12");
    QPTScript::write("actual", "13");
    harness.openLog("log", 0);
    script.startTest();
    inThreads([&](char const* name) {
        harness.checkNamedFile(name, "actual", "expected", 0);
        harness.checkNamedMemory(name, name, name, 16, 0);
        harness.checkNamedMemoryWarn(name, nullptr, name, 16);
        harness.logScriptError(nullptr);
    });
    QPTTestCase const& t = *harness.getCurrentTest();
    for (long const count : {t.getFailedCount(), t.getPassedCount(), t.getWarnedCount(), t.getScriptErrorCount()})
        EXPECT_EQ(kThreads * kRounds, count);
    harness.endTest();
    inThreads([&](char const* name) { harness.checkNamedMemory(name, name, name, 16, 0); });
    EXPECT_EQ(0, script.end(0));
    std::string text = QPTScript::read("log");
    for (char digit = '0'; digit < '0' + kThreads; ++digit)
        for (std::string const& block : blocksOf(digit))
            EXPECT_EQ(kRounds, QPTScript::remove(text, block)) << block;
    for (char const* const line : {">> Script Error: logCheckPass() called outside test script\n",
                                   "checkMemory)() called outside test script\n"})
        EXPECT_EQ(kThreads * kRounds, QPTScript::remove(text, line)) << line;
    EXPECT_THAT(text, testing::HasSubstr("= Other                   800       0       0       0       "));
}

} // namespace
