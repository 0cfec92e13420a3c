#include "MoRecordingListener.h"
#include "MoTestTree.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>
#include <sstream>

namespace {

std::string line(std::string const& tag, std::string const& master, std::string const& actual) {
    return "<" + tag + "><ReturnCode>1</ReturnCode><Command/><ResultsFile/><StepNumber>0</StepNumber><MasterFile>" +
           master + "</MasterFile><CurrentFile>" + actual + "</CurrentFile></" + tag + ">\n";
}

void notifyAll(MoDiffListener& listener) {
    MoDiffResultPass("m/a&b", "a/a&b").notifyListener(listener);
    MoDiffResultFail("f", "f").notifyListener(listener);
    MoDiffResultFailDiff("d", "e").notifyListener(listener);
    MoDiffResultFailDiffNormalized("n", "out", new char[2]{'\xE9', '\0'}, new char[1]{'\0'}, 0)
        .notifyListener(listener);
    MoDiffResultFailFileMissing("<m>", "\"a'", "<m>").notifyListener(listener);
}

std::string const kPass = "<TestSummary>\n" + line("TestCasePassDiff", "m/a&amp;b", "a/a&amp;b");
std::string const kFail = line("TestCaseFailureDiff", "f", "f");
std::string const kOtherFailures = line("TestCaseFailureDiff", "d", "e") + line("TestCaseFailureDiff", "n", "out") +
                                   line("TestCaseFailureDiff", "&lt;m&gt;", "&quot;a&apos;");

TEST(MoDiffStreamLog, writes_one_line_a_result_and_can_be_opened_again) {
    std::ostringstream first, second;
    {
        MoDiffStreamLog log;
        log.open(&first);
        notifyAll(log);
        log.close();
        log.open(&second);
    }
    EXPECT_EQ(kPass + kFail + kOtherFailures + "</TestSummary>\n", first.str());
    EXPECT_EQ("<TestSummary>\n", second.str()); // left open
}

TEST(MoDiffFileLog, leaves_a_whole_summary_flushed_line_by_line) {
    MoTestTree const tree;
    MoTestTree::write("log", "an older text that is longer than the first line");
    for (char const* unwritable : {"nowhere/log", "/dev/full"}) {
        MoDiffFileLog log(unwritable);
        notifyAll(log); // to no effect
    }
    {
        MoDiffFileLog log("log");
        EXPECT_EQ("<TestSummary>\n", MoTestTree::read("log"));
        notifyAll(log);
        EXPECT_EQ(kPass + kOtherFailures, MoTestTree::read("log")); // without the bare failure
        MoDiffResultPass(std::string(5000, '&'), "a\xC3\xA9 ]]>").notifyListener(log);
    }
    pugi::xml_document summary;
    ASSERT_TRUE(summary.load_file("log"));
    pugi::xml_node const last = summary.child("TestSummary").last_child();
    EXPECT_EQ(std::string(5000, '&'), last.child_value("MasterFile"));
    EXPECT_STREQ("a\xC3\xA9 ]]>", last.child_value("CurrentFile"));
}

TEST(MoDiffLogNormalized, writes_both_texts_of_a_normalized_difference_beside_the_actual_file) {
    MoTestTree const tree;
    MoTestTree::write("out.normalized_actual", "an older text");
    MoDiffLogNormalized log;
    notifyAll(log);
    EXPECT_EQ("\xE9", MoTestTree::read("out.normalized_master"));
    EXPECT_EQ("", MoTestTree::read("out.normalized_actual"));
    EXPECT_EQ(2, MoTestTree::count("."));
    std::filesystem::remove("out.normalized_master");
    std::filesystem::create_directory("out.normalized_master");
    MoDiffResultFailDiffNormalized("m", "out", new char[1]{}, new char[2]{'x', '\0'}, 0).notifyListener(log);
    EXPECT_EQ("x", MoTestTree::read("out.normalized_actual")); // though its fellow cannot be written
}

} // namespace
