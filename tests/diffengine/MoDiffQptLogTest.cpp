#include "harness/QPTScript.h"

#include "KLTAssertError.h"
#include "MoDiffQptLog.h"
#include "MoDiffResultFailDiffNormalized.h"
#include "MoDiffResultFailFileMissing.h"
#include "MoDiffResultPass.h"
#include "QPTOutputLock.h"

#include <cstring>
#include <vector>

namespace {

/// Records its checks, and takes the output lock while it does.
struct RecordingLog : MoDiffQptLog {
    explicit RecordingLog(QPTTestHarness* receiver) : harness(receiver) {}
    void logCheck(char const* description, bool passed) override {
        if (harness)
            QPTOutputLock const lock(*harness);
        checks.push_back(std::string(passed ? "+ " : "- ") + description);
    }
    QPTTestHarness* getHarness() override { return harness; }

    QPTTestHarness* harness;
    std::vector<std::string> checks;
};

char* newText(char const* text) {
    return text ? std::strcpy(new char[std::strlen(text) + 1], text) : nullptr;
}

std::string const kCheck = "- Normalized contents are equivalent: m and a";

TEST(MoDiffQptLog, each_result_is_one_check) {
    QPTScript script;
    RecordingLog log(script.harness);
    MoDiffResultPass("m", "a").notifyListener(log);
    MoDiffResultFail("m", "a").notifyListener(log);
    MoDiffResultFailDiff("m", "a").notifyListener(log);
    MoDiffResultFailFileMissing("m", "a", "m").notifyListener(log);
    MoDiffResultFailFileMissing("m", "a", "a").notifyListener(log);
    MoDiffResultFailFileMissing("m", "a", "other").notifyListener(log);
    EXPECT_EQ((std::vector<std::string>{"+ Contents are equivalent: m and a", "- Contents are equivalent: m and a",
                                        "- Contents are equivalent: m and a", "- Master file is missing: m",
                                        "- Actual file is missing: a", "- Actual file is missing: other"}),
              log.checks);
    EXPECT_EQ("", script.console());
}

TEST(MoDiffQptLog, normalized_difference_is_dumped_from_where_it_begins) {
    std::string const longText = "abc" + std::string(200, 'M');
    struct Row {
        std::string master;
        std::string actual;
        char const* start; // of the dump
        char const* end;
    } const rows[] = {
        {"abcX", "abcY", "Offset: 0X3 (3)\n  actual:  59 ", "\n1 bytes compared.  A total of 1 bytes unequal\n\n"},
        {longText, "abc" + std::string(128, 'A'), "Offset: 0X3 (3)\n  actual:  41  41",
         "\n128 bytes compared.  A total of 128 bytes unequal\n\n"},
        {"abc", longText, "0 bytes", "0 bytes compared.  A total of 0 bytes unequal\n\n"},
        {longText, "abc", "0 bytes", "0 bytes compared.  A total of 0 bytes unequal\n\n"},
    };
    for (Row const& row : rows)
        for (eLogLevel const level : {eLogNone, eLogMinimal, eLogNormal}) {
            QPTScript script(level);
            RecordingLog log(script.harness);
            MoDiffResultFailDiffNormalized result("m", "a", newText(row.master.c_str()), newText(row.actual.c_str()),
                                                  3);
            result.notifyListener(log);
            EXPECT_EQ(std::vector<std::string>{kCheck}, log.checks);
            std::string const text = script.console();
            std::string const header = level == eLogNone ? "" : ">>  FAILED: Check File: m\na\n";
            EXPECT_THAT(text, testing::StartsWith(header + (level == eLogNormal ? row.start : "")));
            EXPECT_THAT(text, testing::EndsWith(level == eLogNormal ? row.end : header));
            EXPECT_EQ(level == eLogNormal, text.length() > header.length());
        }
}

TEST(MoDiffQptLog, assertions_come_after_the_check_and_leave_the_lock_free) {
    struct Row {
        bool hasHarness;
        char const* master;
        char const* actual;
        char const* text;
        int line;
        char const* header;
    } const rows[] = {
        {false, "M", "A", "KLT_ASSERT(harness);", 98, ""},
        {true, nullptr, nullptr, "KLT_ASSERT(masterBuffer);", 115, ">>  FAILED: Check File: m\na\n"},
        {true, "M", nullptr, "KLT_ASSERT(actualBuffer);", 116, ">>  FAILED: Check File: m\na\n"},
    };
    for (Row const& row : rows) {
        QPTScript script;
        RecordingLog log(row.hasHarness ? script.harness : nullptr);
        try {
            MoDiffResultFailDiffNormalized("m", "a", newText(row.master), newText(row.actual), 0).notifyListener(log);
            ADD_FAILURE() << row.text;
        } catch (KLTAssertError const& error) {
            EXPECT_STREQ(row.text, error.getText());
            EXPECT_STREQ("MoDiffQptLog", error.getBackTrace().front().location.getFileName());
            EXPECT_EQ(row.line, error.getBackTrace().front().location.getLine());
        }
        EXPECT_EQ(std::vector<std::string>{kCheck}, log.checks);
        EXPECT_EQ(row.header, script.console());
        script.expectOutputLockFree();
    }
}

} // namespace
