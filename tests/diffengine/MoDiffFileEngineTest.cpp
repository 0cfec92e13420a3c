#include "MoRecordingListener.h"
#include "MoTestTree.h"

#include <gmock/gmock.h>
#include <stdexcept>

namespace {

using testing::ElementsAre;

struct Engine : MoDiffFileEngine {
    using MoDiffFileEngine::MoDiffFileEngine;
    std::string getOutputDirectoryTypeName() const override { return "v5DebugX"; }
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override {
        return MoDiffFileEngine::getMasterFileGlobExpression(actualFile);
    }
    MoDiffResult* performDiff(std::string const& master, std::string const& actual) const override {
        if (MoTestTree::read(actual) == "bad")
            throw std::logic_error("performDiff");
        return new MoDiffResultPass(master, actual);
    }
};

TEST(MoDiffFileEngine, derives_paths_from_the_actual_file_and_the_sub_directory) {
    // clang-format off
    char const* const rows[][4] = { // sub-directory, actual file, glob, file compared with a master m.csv
        {nullptr, "r/f/s.csv", "r/f/Masters/s*.pdf", "../webcontent/v5DebugX/m.csv"},
        {"", "r/f/s.csv", "r/f/Masters/s*.pdf", "../webcontent/v5DebugX/m.csv"},
        {"en", "r/f/s.v2.csv", "r/f/Masters/en/s.v2*.pdf", "../webcontent/v5DebugX/en/m.csv"},
        {"e/", "s", "./Masters/e//s*.pdf", "../webcontent/v5DebugX/e//m.csv"},
        {nullptr, "/s.csv", "/Masters/s*.pdf", "../webcontent/v5DebugX/m.csv"}};
    // clang-format on
    for (auto const& [subDirectory, actual, glob, compared] : rows) {
        EXPECT_EQ(glob, Engine(subDirectory).getMasterFileGlobExpression(actual));
        EXPECT_EQ(compared, Engine(subDirectory).getActualFile("x/Masters/m.csv"));
    }
}

TEST(MoDiffFileEngine, every_master_yields_one_result_until_an_error_passes) {
    MoTestTree const tree;
    for (char const* name : {"r_b.pdf", "r.pdf", "r_a.pdf", "other.pdf"})
        MoTestTree::write(std::string("rep/Masters/") + name, "");
    for (char const* name : {"r.pdf", "r_b.pdf", "r_c.pdf"})
        MoTestTree::write(std::string("../webcontent/v5DebugX/") + name, "");
    Engine const engine(nullptr);
    MoRecordingListener first, second, third;
    engine.verifyOutput({&first, &second}, "rep/r.none");
    EXPECT_THAT(first.outcomes, ElementsAre("pass", "missing ../webcontent/v5DebugX/r_a.pdf", "pass"));
    EXPECT_THAT(first.names, ElementsAre("rep/Masters/r.pdf ../webcontent/v5DebugX/r.pdf",
                                         "rep/Masters/r_a.pdf ../webcontent/v5DebugX/r_a.pdf",
                                         "rep/Masters/r_b.pdf ../webcontent/v5DebugX/r_b.pdf"));
    EXPECT_EQ(first.names, second.names);
    engine.verifyOutput({&first}, "rep/s.none");
    EXPECT_EQ(3U, first.outcomes.size()); // no master: silence
    EXPECT_THROW(engine.verifyOutput({nullptr, &third}, "rep/r"), KLTAssertError);
    EXPECT_EQ(0U, third.outcomes.size()); // null comes first
    MoTestTree::write("../webcontent/v5DebugX/r.pdf", "bad");
    EXPECT_THROW(engine.verifyOutput({&third}, "rep/r"), std::logic_error);
    EXPECT_EQ(0U, third.outcomes.size());
}

/// Notes its name and takes listeners out of a set, and puts them in, when it is told a result.
struct Meddler : MoRecordingListener {
    void comparisonNotification(MoDiffResultPass const&) override {
        *calls += name;
        for (MoDiffListener* listener : removed)
            registry->removeListener(listener);
        for (MoDiffListener* listener : added)
            registry->addListener(listener);
    }
    char name = '?';
    std::string* calls = nullptr;
    MoDiffEngineRegistry* registry = nullptr;
    std::vector<MoDiffListener*> removed, added;
};

TEST(MoDiffFileEngine, listeners_may_come_and_go_while_a_result_is_delivered) {
    MoTestTree const tree;
    for (char const* name :
         {"Masters/r1.pdf", "Masters/r2.pdf", "../webcontent/v5DebugX/r1.pdf", "../webcontent/v5DebugX/r2.pdf"})
        MoTestTree::write(name, "");
    struct {
        std::vector<std::size_t> removed, added; // by the listener 1 of 0 to 3, of which 3 is not there at first
        char const* calls;                       // for two results
    } const rows[] = {{{}, {}, "012012"},   {{1}, {}, "01202"},    {{1, 2}, {}, "010"}, {{0, 1}, {}, "0122"},
                      {{2}, {3}, "013013"}, {{0, 1, 2}, {}, "01"}, {{1}, {1}, "012012"}};
    for (auto const& row : rows) {
        std::string calls;
        Engine const engine(nullptr);
        MoDiffEngineRegistry registry;
        Meddler listeners[4]; // in one array, so that their order is known
        for (std::size_t i = 0; i < 4; ++i) {
            listeners[i].name = static_cast<char>('0' + i);
            listeners[i].calls = &calls;
            listeners[i].registry = &registry;
            if (i < 3)
                registry.addListener(&listeners[i]);
        }
        for (std::size_t const i : row.removed)
            listeners[1].removed.push_back(&listeners[i]);
        for (std::size_t const i : row.added)
            listeners[1].added.push_back(&listeners[i]);
        registry.registerDiffEngine(eFormatPdf, const_cast<Engine*>(&engine));
        registry.verifyOutput(eFormatPdf, "r");
        EXPECT_EQ(row.calls, calls);
    }
}

TEST(MoDiffFileEngine, tells_every_difference_of_length_and_content) {
    MoTestTree const tree;
    std::string const block(8192, 'x'), two = block + block;
    std::string const rows[][3] = {{"", "", "pass"},
                                   {block, block, "pass"},
                                   {two + "y", two + "y", "pass"},
                                   {block, block + "x", "diff"},
                                   {two, block, "diff"},
                                   {"", "x", "diff"},
                                   {two + "y", two + "z", "diff"},
                                   {"a\r\n", "a\n", "diff"},
                                   {std::string("a\0b", 3), std::string("a\0c", 3), "diff"},
                                   {two, block + "y" + block.substr(1), "diff"}};
    for (auto const& [master, actual, outcome] : rows) {
        MoTestTree::write("m", master);
        MoTestTree::write("a", actual);
        EXPECT_EQ(outcome, outcomeOf(MoDiffFileEngine::areFilesIdentical("m", "a"))) << master;
        EXPECT_EQ(outcome, outcomeOf(MoDiffFileEngine::areFilesIdentical("a", "m"))) << master;
    }
    long const before = MoTestTree::count("/proc/self/fd");
    EXPECT_EQ("missing no", outcomeOf(MoDiffFileEngine::areFilesIdentical("no", "nor this")));
    EXPECT_EQ("missing no", outcomeOf(MoDiffFileEngine::areFilesIdentical("m", "no")));
    EXPECT_EQ("diff", outcomeOf(MoDiffFileEngine::areFilesIdentical("m", "."))); // a read error
    // Files that tell no length, or a wrong one.
    for (char const* name : {"/proc/version", "/sys/devices/system/cpu/online"}) {
        MoTestTree::write("a", MoTestTree::read(name));
        EXPECT_EQ("pass", outcomeOf(MoDiffFileEngine::areFilesIdentical(name, "a"))) << name;
        EXPECT_EQ("pass", outcomeOf(MoDiffFileEngine::areFilesIdentical("a", name))) << name;
    }
    EXPECT_EQ(before, MoTestTree::count("/proc/self/fd"));
}

} // namespace
