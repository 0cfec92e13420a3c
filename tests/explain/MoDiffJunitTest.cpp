#include "MoDiffJunit.h"

#include "../MoTestTree.h"
#include "MoDiffMarkupText.h"
#include "MoDiffRecord.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pugixml.hpp>
#include <set>
#include <sstream>

namespace {

using Outcome = MoDiffOutcome;

MoDiffPairResult pairOf(std::string const& format, std::string const& name, Outcome outcome) {
    MoDiffPairResult pair;
    pair.format = format;
    pair.master = "./a/Masters/" + name;
    pair.actual = "../webcontent/" + name;
    pair.id = format + ":a/Masters/" + name;
    pair.outcome = outcome;
    pair.seconds = 0.25;
    return pair;
}

class JunitTest : public testing::Test {
protected:
    /// The test cases of a record, parsed. Checks what holds for all: unique names, counts, no byte that XML forbids.
    std::string write(std::vector<MoDiffPairResult> const& pairs, MoDiffJunit::Limits const& limits = {}) {
        m_header.pairs = pairs.size();
        std::string record = MoDiffRecord::headerLine(m_header);
        for (MoDiffPairResult const& pair : pairs)
            record += MoDiffRecord::pairLine(pair);
        MoDiffRecordEnd end;
        end.complete = true;
        MoTestTree::write(
            "out/run.jsonl",
            record + (m_isComplete ? MoDiffRecord::newFilesLine(m_newFiles) + MoDiffRecord::endLine(end) : ""));
        MoDiffPairSetups setups{MoDiffSuiteConfiguration()};
        std::ostringstream xml;
        MoDiffJunit::write(MoDiffRecordPairs("out"), setups, limits, xml);
        EXPECT_TRUE(m_document.load_string(xml.str().c_str()));
        std::size_t const suites = check(m_document.first_child(), ".//testcase") + checkSuites();
        EXPECT_EQ(suites, 0U) << xml.str().substr(0, 2000);
        return xml.str();
    }

    /// How many pairs ended as such an element.
    std::size_t count(char const* element) const {
        return m_document.select_nodes((std::string("//testcase[") + element + "]").c_str()).size();
    }

    std::string text(char const* path) const { return m_document.select_node(path).node().text().get(); }

    MoTestTree m_tree;
    MoDiffRecordHeader m_header;
    std::vector<std::string> m_newFiles;
    bool m_isComplete = true;
    pugi::xml_document m_document;

private:
    /// How many of an element's counts are wrong.
    static std::size_t check(pugi::xml_node const& node, char const* cases) {
        std::size_t wrong = node.attribute("tests").as_uint() != node.select_nodes(cases).size();
        for (auto const& [name, child] :
             {std::pair{"failures", "failure"}, {"errors", "error"}, {"skipped", "skipped"}})
            wrong += node.attribute(name).as_uint() !=
                     node.select_nodes((std::string(cases) + "[" + child + "]").c_str()).size();
        return wrong;
    }

    std::size_t checkSuites() const {
        std::size_t wrong = 0;
        std::set<std::string> names;
        for (pugi::xml_node const suite : m_document.first_child().children()) {
            wrong += check(suite, "testcase") + !names.insert(suite.attribute("name").value()).second;
            for (pugi::xml_node const one : suite.children())
                wrong += !names.insert(one.attribute("name").value()).second;
        }
        return wrong;
    }
};

struct OutcomeRow {
    Outcome outcome;
    char const* element; ///< "" for a pass
};

OutcomeRow const kOutcomes[] = {
    {Outcome::ePassed, ""},      {Outcome::eDifferent, "failure"}, {Outcome::eMissing, "failure"},
    {Outcome::eError, "error"},  {Outcome::eCrashed, "error"},     {Outcome::eTimeout, "error"},
    {Outcome::eMemory, "error"}, {Outcome::eExpected, "skipped"},  {Outcome::eUnexpectedlyPassed, "failure"},
};

TEST_F(JunitTest, EachOutcomeIsWhatServersTakeItFor) {
    for (OutcomeRow const& row : kOutcomes) {
        MoDiffPairResult pair = pairOf("html", "r.html", row.outcome);
        pair.detail = "it \"says\" <so> & \x01\xff";
        pair.warnings = {"odd\n"};
        pair.output = "first\nsecond\tline\n";
        write({pair, pairOf("csv", "r.csv", Outcome::ePassed)});
        pugi::xml_node const one = m_document.select_node("//testcase[@classname='html.a.Masters']").node();
        EXPECT_STREQ(one.attribute("name").value(), "html:a/Masters/r.html");
        EXPECT_STREQ(one.attribute("time").value(), "0.250");
        EXPECT_STREQ(one.child("system-out").text().get(), "warning  odd\\n\n");
        EXPECT_EQ(count("failure") + count("error") + count("skipped"), *row.element ? 1U : 0U);
        if (!*row.element)
            continue;
        pugi::xml_node const verdict = one.child(row.element);
        EXPECT_STREQ(verdict.attribute("message").value(), "it \"says\" <so> & \\x01\\xff") << wordOf(row.outcome);
        bool const isOutputShown = row.outcome != Outcome::eExpected;
        EXPECT_EQ(std::string(verdict.text().get()).find("first\nsecond\\tline\n") != std::string::npos,
                  isOutputShown);
    }
}

TEST_F(JunitTest, DifferencesAreShownAsLongAsTheFilesAreTheSame) {
    MoDiffPairResult pair = pairOf("csi", "r.csi", Outcome::eDifferent);
    pair.actual = "../webcontent/v5DebugROM/r.csi";
    pair.hash = {"a96faf705af16834e6c632b61e964e1f", "4b2212e31ac97fd4575a0b1c44d8843f"}; // xxh128sum
    MoTestTree::write(pair.master, "a");
    MoTestTree::write(pair.actual, "b");
    write({pair});
    EXPECT_THAT(text("//failure"), testing::HasSubstr("@@ master 1:1, actual 1:1 @@\n-a\n+b\n"));
    MoTestTree::write(pair.actual, "c");
    write({pair});
    EXPECT_THAT(text("//failure"), testing::EndsWith("the files changed since the run\n"));
}

TEST_F(JunitTest, WhatARunLacksIsNotGreen) {
    m_newFiles = {"../webcontent/new.html", "../webcontent/\xff.html"};
    write({pairOf("html", "r.html", Outcome::ePassed)});
    EXPECT_EQ(count("failure"), 0U);
    m_header.newFails = true;
    write({pairOf("html", "r.html", Outcome::ePassed)});
    EXPECT_EQ(count("failure"), 2U);
    EXPECT_TRUE(m_document.select_node("//testcase[@name='new:../webcontent/\\xff.html']/failure"));
    m_isComplete = false;
    write({pairOf("html", "r.html", Outcome::ePassed)});
    EXPECT_EQ(count("error") * 10 + count("failure"), 10U);
    EXPECT_THAT(text("//error"), testing::HasSubstr("incomplete, it holds 1 of 1 pairs"));
}

enum Kept { eAll, eSome, eNone };

struct LimitRow {
    char const* name;
    std::size_t mostBytes;
    std::size_t pairs; ///< every fourth of them fails
    std::size_t words; ///< of each that fails
    Kept failures;
    Kept passes;
    Kept texts;
};

LimitRow const kLimits[] = {
    {"all fits", 1'000'000, 40, 1000, eAll, eAll, eAll},
    {"a text over its own limit", 10'000'000, 8, 70'000, eAll, eAll, eNone},
    {"texts share what is left", 100'000, 40, 20'000, eAll, eAll, eNone},
    {"passes go first", 100'000, 600, 200, eAll, eSome, eNone},
    {"then failures", 50'000, 4000, 20'000, eSome, eNone, eNone},
};

Kept keptOf(std::size_t count, std::size_t all) {
    return count == all ? eAll : count > 0 ? eSome : eNone;
}

TEST_F(JunitTest, SizesHaveLimitsAndWhatIsLeftOutIsSaid) {
    for (LimitRow const& row : kLimits) {
        std::vector<MoDiffPairResult> pairs;
        for (std::size_t index = 0; index < row.pairs; ++index) {
            bool const fails = index % 4 == 0;
            pairs.push_back(pairOf(index % 3 == 0 ? "xlsx" : "html", std::to_string(index),
                                   fails ? Outcome::eMissing : Outcome::ePassed));
            if (fails)
                pairs.back().output.assign(row.words, '&');
        }
        MoDiffJunit::Limits limits;
        limits.mostBytes = row.mostBytes;
        std::string const xml = write(pairs, limits);
        EXPECT_LE(xml.size(), row.mostBytes) << row.name;
        std::size_t const failures = count("failure");
        std::size_t const passes = count("not(failure or error or skipped)");
        std::size_t const clipped = count("failure[contains(., '[clipped;')]");
        EXPECT_EQ(keptOf(failures, row.pairs / 4), row.failures) << row.name;
        EXPECT_EQ(keptOf(passes, row.pairs - row.pairs / 4), row.passes) << row.name;
        EXPECT_EQ(keptOf(failures - clipped, failures), row.texts) << row.name;
        EXPECT_EQ(count("error"), row.failures == eAll ? 0U : 1U) << row.name;
        EXPECT_EQ(count("skipped"), row.failures == eAll && row.passes != eAll ? 1U : 0U) << row.name;
        EXPECT_GT(xml.size(), row.passes == eAll ? 0 : row.mostBytes / 2) << row.name;
    }
}

TEST(MarkupTextTest, FitsCutNeitherCharactersNorEntities) {
    struct Row {
        char const* markup;
        std::size_t bytes;
        char const* expected;
    };
    Row const rows[] = {{"ab", 2, "ab"},
                        {"abc", 2, "ab"},
                        {"a&amp;b", 5, "a"},
                        {"a&amp;b", 6, "a&amp;"},
                        {"\xc3\xa4x", 1, ""},
                        {"\xc3\xa4x", 2, "\xc3\xa4"},
                        {"&lt;&gt;", 7, "&lt;"},
                        {"\xf0\x9f\x98\x80!", 3, ""},
                        {"", 0, ""}};
    for (Row const& row : rows)
        EXPECT_EQ(MoDiffMarkupText::fit(row.markup, row.bytes), row.expected) << row.markup << ' ' << row.bytes;
}

} // namespace
