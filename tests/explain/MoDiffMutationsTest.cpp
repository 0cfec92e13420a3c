#include "MoDiffMutations.h"

#include "../MoTestTree.h"
#include "MoDiffContentHash.h"
#include "MoDiffFormatTable.h"

#include <cstdlib>
#include <deque>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

namespace {

using testing::ElementsAre;
using Outcomes = MoDiffMutations::Outcomes;

class MutationsTest : public testing::Test {
protected:
    MutationsTest() {
        setenv("PATH", "/usr/bin:/bin", 1);
        std::filesystem::create_directory(m_tree.root() / "tmp");
        setenv("TMPDIR", (m_tree.root() / "tmp").c_str(), 1);
        m_configuration.formats = {"html", "csi", "csv", "vmd"};
        m_configuration.jobs = 2;
    }
    ~MutationsTest() override {
        EXPECT_EQ(std::filesystem::current_path(), m_tree.root() / "server/run");
        EXPECT_EQ(MoTestTree::count((m_tree.root() / "tmp").c_str()), 0);
        unsetenv("TMPDIR");
    }

    MoDiffPairResult& add(std::string const& format, std::string const& master, std::string const& content) {
        MoDiffPairResult pair;
        pair.format = format;
        pair.id = format + ":" + master;
        pair.master = master;
        pair.actual = MoDiffFormatTable::find(format)->makeEngine({})->getActualFile(master);
        pair.bytes = MoDiffBothSides<std::uint64_t>{content.size(), 0};
        pair.hash.master = MoDiffContentHash::digitsOf(content.data(), content.size());
        MoTestTree::write(master, content);
        m_pairs.push_back(pair);
        return m_pairs.back();
    }

    Outcomes perform(std::size_t count, std::uint64_t seed = 1) {
        std::vector<MoDiffPairResult const*> pairs;
        for (MoDiffPairResult const& pair : m_pairs)
            pairs.push_back(&pair);
        MoDiffPairSetups setups(m_configuration);
        MoDiffMutations::Options options;
        options.count = count;
        options.seed = seed;
        m_changed.clear();
        return MoDiffMutations::perform(pairs, setups, m_configuration, options, m_changed);
    }

    static std::string words(Outcomes const& outcomes) {
        std::string text;
        for (auto const& [format, outcome] : outcomes) {
            text += format + " " + std::to_string(outcome.noticed) + "+" + std::to_string(outcome.unmeasured);
            for (auto const& [pattern, count] : outcome.unnoticed)
                text += " " + pattern + " " + std::to_string(count);
            text += "/" + std::to_string(outcome.made) + "; ";
        }
        return text;
    }

    MoTestTree m_tree;
    MoDiffSuiteConfiguration m_configuration;
    std::deque<MoDiffPairResult> m_pairs;
    std::vector<std::string> m_changed;
};

TEST_F(MutationsTest, WhatNoPatternDeletesIsNoticedAndTheRestIsNamed) {
    add("csi", "Masters/a.csi", "1 a Z\r\n\xc3\xa4 \x01");
    add("csv", "Masters/CSV/a.csv", std::string("1,\0\r\n", 5));
    std::string const script(900, 's');
    add("html", "Masters/a.html", "<p><script>" + script + "</script>"); // 900 of 920 bytes are hidden
    Outcomes const outcomes = perform(300);
    EXPECT_EQ(outcomes.at("csi").noticed * 10 + outcomes.at("csi").unnoticed.size(), 1000U) << words(outcomes);
    EXPECT_EQ(outcomes.at("csv").noticed, 100U) << words(outcomes);
    MoDiffMutations::Outcome const& html = outcomes.at("html");
    EXPECT_EQ(html.made, 100U);
    ASSERT_EQ(html.unnoticed.size(), 1U) << words(outcomes);
    EXPECT_NEAR(static_cast<double>(html.unnoticed.at("Script")), 98, 6);
}

TEST_F(MutationsTest, EachByteHasTheSameChanceWhateverItsMaster) {
    add("html", "Masters/small.html", "<p>1</p>");
    add("html", "Masters/large.html", "<script>" + std::string(72, 's') + "</script>");
    double const hidden = static_cast<double>(perform(1000).at("html").unnoticed.at("Script"));
    EXPECT_NEAR(hidden / 1000, 72 / 97.0, 0.06);
}

TEST_F(MutationsTest, ASeedAlwaysChangesTheSameBytes) {
    add("html", "Masters/a.html", "<p>text<script>text</script>");
    add("csi", "Masters/a.csi", "text");
    std::string const one = words(perform(101));
    EXPECT_EQ(words(perform(101)), one);
    std::set<std::string> others = {one};
    for (std::uint64_t seed = 2; seed < 7; ++seed)
        others.insert(words(perform(101, seed)));
    EXPECT_GT(others.size(), 2U);
}

TEST_F(MutationsTest, MastersThatCannotTellAreSaid) {
    MoTestTree::write(
        "../../src/kavu/Builds/tools/diffvmd/diffvmd.py",
        "import sys\nbad = b'bad' in open(sys.argv[1], 'rb').read()\nprint('compared')\nsys.exit(2 if bad else 0)\n");
    add("vmd", "Masters/vmd/a.vmd", "bad bad ");
    add("vmd", "Masters/vmd/b.vmd", "good");
    Outcomes outcomes = perform(30);
    std::size_t const equal = outcomes.at("vmd").unnoticed[MoDiffMutations::kEqual];
    EXPECT_EQ(outcomes.at("vmd").unmeasured + equal, 30U) << words(outcomes);
    EXPECT_NEAR(static_cast<double>(equal), 10, 8);
    add("csi", "Masters/a.csi", "text");
    MoTestTree::write("Masters/a.csi", "TEXT");
    std::filesystem::remove("Masters/vmd/a.vmd");
    outcomes = perform(20);
    EXPECT_THAT(m_changed, ElementsAre("csi:Masters/a.csi", "vmd:Masters/vmd/a.vmd"));
    EXPECT_EQ(outcomes.at("csi").made + outcomes.at("vmd").unmeasured, 0U);
    EXPECT_GT(outcomes.at("vmd").made, 0U);
}

} // namespace
