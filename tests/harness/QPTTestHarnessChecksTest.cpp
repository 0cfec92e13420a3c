#include "QPTScript.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace {

using testing::EndsWith;
using testing::StartsWith;

std::string total(unsigned long compared, unsigned long unequal) {
    return std::to_string(compared) + " bytes compared.  A total of " + std::to_string(unequal) + " bytes unequal\n";
}

/// A row: its offset, then three hex parts, each with its character part.
std::string row(std::string const& offset, std::string const (&parts)[6]) {
    std::string const padding(4 * (16 - parts[5].length()) + 5, ' ');
    return "Offset: " + offset + "\n  actual:" + parts[0] + padding + parts[1] + "\nexpected:" + parts[2] + padding +
           parts[3] + "\n         " + parts[4] + padding + parts[5] + "\n";
}

TEST(HarnessFileChecks, equal_files_pass_and_others_are_dumped_from_where_they_part) {
    std::string const big(3 << 20, 'b');
    struct Row {
        std::string actual;
        std::string expected;
        std::string dump; // empty: they are equal
    } const rows[] = {
        {"", "", ""},
        {"\xFF", "\xFF", ""},
        {big, big, ""},
        {"\xFF", "", total(0, 0)},
        {"", "\xFF", row("0 (0)", {"  00", ".", "  FF", ".", "  ^^", "^"}) + total(1, 1)},
        {"a\xFFz", "a\xFF\x7F", row("0X2 (2)", {"  7A", "z", "  7F", ".", "  ^^", "^"}) + total(1, 1)},
        {big + "1~", big + "2~ ",
         row("0X300000 (3145728)", {"  31  7E  00", "1~.", "  32  7E  20", "2~ ", "  ^^      ^^", "^ ^"}) +
             total(3, 2)},
        {"x" + big, "y" + big, total(128, 1)},
    };
    for (Row const& each : rows) {
        SCOPED_TRACE(each.dump);
        QPTScript script;
        QPTScript::write("actual", each.actual);
        QPTScript::write("expected", each.expected);
        script.startTest();
        bool const isEqual = each.dump.empty();
        EXPECT_EQ(isEqual ? 1 : 0, script.harness->checkNamedFile("n", "actual", "expected", 0));
        std::string const text = script.console();
        EXPECT_THAT(text, StartsWith(isEqual ? "PASSED: Check File: n\n" : ">>  FAILED: Check File: n\n"));
        EXPECT_THAT(text, EndsWith(isEqual ? text : "\n" + each.dump + "\n"));
        EXPECT_EQ(isEqual ? 1 : 0, script.harness->checkNamedFileWarn("n", "expected", "actual"));
        EXPECT_THAT(script.console(), StartsWith(isEqual ? "PASSED: " : ">>  WARNED: Check File: n\n"));
        EXPECT_EQ(isEqual ? 0 : 1, script.harness->getCurrentTest()->getWarnedCount());
    }
}

TEST(HarnessFileChecks, unusable_files_are_differences_with_a_reason) {
    struct Row {
        char const* actual;
        char const* expected;
        std::string reason;
    } const rows[] = {
        {"good", nullptr, "Invalid expected file name\n"},
        {nullptr, nullptr, "Invalid actual file name\n"},
        {"good", "missing", "Unable to open expected file\n"},
        {"missing", "missing", "Unable to open actual file\n"},
        {"dir", "dir", "Unable to open actual file\n"},
        {"fifo", "good", "Bad seek on actual file!\n"},
        {"good", "fifo", "Bad seek on expected file!\n"},
        {"/proc/self/mem", "/proc/self/mem", total(0, 0)}, // opens, but no byte can be read at 0
    };
    for (Row const& each : rows)
        for (eLogLevel const level : {eLogMinimal, eLogConcise, eLogNormal}) {
            SCOPED_TRACE(each.reason);
            QPTScript script(level);
            QPTScript::write("good", "Y");
            std::filesystem::create_directory("dir");
            mkfifo("fifo", 0600);
            int const silentWriter = open("fifo", O_RDWR | O_NONBLOCK);
            ASSERT_EQ(1, write(silentWriter, "X", 1));
            script.startTest();
            EXPECT_EQ(0, script.harness->checkNamedFile("n", each.actual, each.expected, 0));
            close(silentWriter);
            EXPECT_EQ(">>  FAILED: Check File: n\n" + (level == eLogNormal ? each.reason + "\n" : ""),
                      script.console());
            EXPECT_EQ(1, script.harness->getCurrentTest()->getFailedCount());
        }
}

TEST(HarnessMemoryChecks, outcome_and_dump_follow_contents_and_level) {
    std::string const zeros(300, '\0');
    std::string const ones(300, '\1');
    std::string const late = std::string(16, '\0') + ones.substr(0, 2) + std::string(282, '\0');
    struct Row {
        eLogLevel level;
        void const* actual;
        unsigned long length;
        long rows;
        std::string end;
    } const rows[] = {
        {eLogNormal, ones.data(), 300, 10, total(160, 160)},
        {eLogDetailed, ones.data(), 300, 19, total(300, 300)},
        {eLogNormal, late.data(), 300, 1, total(300, 2)},
        {eLogNormal, nullptr, 300, 1, total(16, 16)},
        {eLogNormal, nullptr, 0, 0, "n\n" + total(0, 0)},
        {eLogConcise, ones.data(), 300, 0, ">>  FAILED: Check Memory: n\n"},
        {eLogConcise, ones.data(), 0, 0, "PASSED: Check Memory: n\n"},
        {eLogMinimal, zeros.data(), 300, 0, ""},
    };
    for (Row const& each : rows) {
        SCOPED_TRACE(each.end);
        QPTScript script(each.level);
        script.startTest();
        int const passes = each.actual == zeros.data() || (each.actual && each.length == 0) ? 1 : 0;
        EXPECT_EQ(passes, script.harness->checkNamedMemory("n", each.actual, zeros.data(), each.length, 0));
        EXPECT_EQ(1 - passes, script.harness->getCurrentTest()->getFailedCount());
        std::string text = script.console();
        EXPECT_THAT(text, EndsWith(each.end));
        EXPECT_EQ(each.rows,
                  QPTScript::remove(text, each.actual == late.data() ? "Offset: 0X10 (16)\n" : "Offset: "));
    }
}

TEST(HarnessMemoryChecks, null_side_is_said_once_in_a_padded_row) {
    unsigned char const text[] = "ABC";
    std::string const hex = "  41  42  43";
    std::string const marks = "  ^^  ^^  ^^";
    std::ostringstream wide; // as wide as an offset can be
    wide << std::hex << std::uppercase << "0X" << ~0UL - 2 << std::dec << " (" << ~0UL - 2 << ")";
    QPTScript script;
    script.harness->dumpBuffer(nullptr, text, 3, 0);
    script.harness->dumpBuffer(text, nullptr, 3, 255);
    script.harness->dumpBuffer(nullptr, nullptr, 3, ~0UL - 2);
    EXPECT_EQ(row("0 (0)", {"  (null)", "", hex, "ABC", marks, "^^^"}) + total(3, 3) +
                  row("0XFF (255)", {hex, "ABC", "  (null)", "", marks, "^^^"}) + total(3, 3) +
                  row(wide.str(), {"  (null)", "", "  (null)", "", marks, "^^^"}) + total(3, 3),
              script.console());
    EXPECT_EQ(0, script.harness->compareBuffer(nullptr, nullptr, 0));
}

TEST(HarnessChecks, outside_any_test_are_two_script_errors) {
    QPTScript script(eLogConcise);
    QPTScript::write("a", "1");
    script.harness->startScript(nullptr, 0);
    script.console();
    EXPECT_EQ(0, script.harness->checkNamedFile("n", "a", "a", 0));
    EXPECT_EQ(0, script.harness->checkNamedFileWarn("n", "a", nullptr));
    EXPECT_EQ(0, script.harness->checkNamedMemory("n", "a", "b", 1, 0));
    EXPECT_EQ(0, script.harness->checkNamedMemoryWarn("n", "a", "a", 1));
    EXPECT_EQ(
        ">> Script Error: logCheckPass() called outside test script\ncheck_file() called outside test script\n"
        ">> Script Error: logCheckWarn() called outside test script\ncheck_file_warn() called outside test script\n"
        ">> Script Error: logCheckFail() called outside test script\ncheckMemory)() called outside test script\n"
        ">> Script Error: logCheckPass() called outside test script\ncheckMemoryWarn() called outside test script\n",
        script.console());
    script.harness->writeSummary(std::cout);
    EXPECT_THAT(script.console(), testing::HasSubstr("= TOTALS                    8       0       0       0   "));
}

TEST(HarnessChecks, lock_is_free_after_a_stream_has_thrown) {
    struct Refusing : std::streambuf {
    } refusing;
    QPTScript script;
    QPTScript::write("a", "1");
    script.startTest();
    std::streambuf* const caught = std::cout.rdbuf(&refusing);
    std::cout.exceptions(std::ios::badbit);
    EXPECT_THROW(script.harness->checkNamedFile("n", "a", "/dev/null", 0), std::ios::failure);
    EXPECT_THROW(script.harness->checkNamedFile("n", "a", "a", 0), std::ios::failure);
    EXPECT_THROW(script.harness->checkNamedMemory("n", "a", "b", 1, 0), std::ios::failure);
    std::cout.exceptions(std::ios::goodbit);
    std::cout.rdbuf(caught);
    script.expectOutputLockFree();
}

TEST(HarnessStrings, null_equals_nothing_and_is_written_as_such) {
    char text[] = "ab\xFF";
    char same[] = "ab\xFF";
    unsigned char high[] = "ab\xFF";
    signed char* const none = nullptr;
    EXPECT_TRUE(QPTCompareEqual(text, same) && QPTCompareEqual("abc", "abc") && QPTCompareEqual(high, high));
    EXPECT_FALSE(QPTCompareEqual("abc", "abd") || QPTCompareEqual(none, none) || QPTCompareEqual(text, nullptr));
    EXPECT_FALSE(QPTCompareEqual(nullptr, nullptr));
    QPTScript script(eLogNone);
    QPTOutputValue("c");
    QPTOutputValue(text);
    QPTOutputValue(high);
    QPTOutputValue(none);
    QPTOutputValue(nullptr);
    EXPECT_EQ("cab\xFF" + std::string("ab\xFF(null)(null)"), script.console());
}

} // namespace
