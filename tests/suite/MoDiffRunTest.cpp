#include "MoDiffRun.h"
#include "MoDiffFileLog.h"
#include "MoDiffRecordReader.h"
#include "MoDiffStrayProcesses.h"
#include "MoFileSizeLimit.h"
#include "MoSuiteTree.h"

#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using testing::ElementsAre;
using testing::HasSubstr;
using namespace std::chrono_literals;

namespace {

/// What a record tells of each pair; times left out.
std::map<std::string, std::string> pairsIn(std::string const& directory, bool* isComplete = nullptr) {
    std::map<std::string, std::string> pairs;
    MoDiffRecordReader reader(directory);
    for (MoDiffPairResult pair; reader.next(pair);) {
        pair.seconds = 0;
        EXPECT_TRUE(pairs.emplace(pair.id, MoDiffRecord::pairLine(pair)).second) << pair.id << " is there twice";
    }
    if (isComplete)
        *isComplete = reader.isComplete();
    return pairs;
}

struct Events : MoDiffRunEvents {
    void takenUp(MoDiffPairResult const&) override { ++takenUpCount; }
    void started(std::size_t pairs) override { startedWith = pairs; }
    void finished(MoDiffPairResult const& result) override {
        outcomes[result.id] = result.outcome;
        details[result.id] = result.detail;
        if (onFinished)
            onFinished();
    }
    std::size_t takenUpCount = 0;
    std::size_t startedWith = 0;
    std::map<std::string, MoDiffOutcome> outcomes;
    std::map<std::string, std::string> details;
    std::function<void()> onFinished;
};

class RunTest : public testing::Test {
protected:
    RunTest() {
        m_options.outDirectory = "out";
        m_tree.configuration.timeLimit = 20s;
    }

    ~RunTest() override {
        MoDiffStrayProcesses::end([](pid_t) { return false; }); // of runs that a test killed
    }

    MoDiffRunReport run() { return MoDiffRun::perform(m_tree.plan, m_tree.configuration, m_options, m_events); }

    /// Runs and tells how long it took, by which moments are chosen, since machines may be busy.
    std::chrono::microseconds measureRun() {
        auto const start = std::chrono::steady_clock::now();
        run();
        return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
    }

    /// Pairs of several formats and outcomes.
    void addMany(int count) {
        for (int number = 0; number < count; ++number) {
            std::string const name = "r" + std::to_string(number);
            std::string const text = "<p>" + name + "</p>" + std::string(3000, 'x') + "<script>1</script>";
            m_tree.add("html", name + ".html", text, number % 3 ? text : text + "more");
            m_tree.add("csv", name + ".csv", "a,b\n", number % 5 ? "a,b\n" : "a,c\n");
            MoTestTree::write(m_tree.add("csi", name + ".csi").master, "no actual");
        }
    }

    /// Replaces the VMD script by one that does something with the pair's file and adds pairs with these names.
    void addScripted(std::string const& script, std::initializer_list<char const*> names) {
        MoSuiteTree::writeScript("import os, sys, time\nname = os.path.basename(sys.argv[2])\nopen(sys.argv[1])\n"
                                 "open(sys.argv[2])\n" +
                                 script);
        for (char const* const name : names)
            m_tree.add("vmd", name + std::string(".vmd"), "x", "x");
    }

    MoDiffOutcome outcomeOf(std::string const& name) const {
        return m_events.outcomes.at("vmd:reports/Masters/vmd/" + name + ".vmd");
    }

    MoSuiteTree m_tree;
    MoDiffRunOptions m_options;
    Events m_events;
};

/// A process of the test, ended with it.
class Helper {
public:
    explicit Helper(std::function<void()> const& action) : m_process(fork()) {
        if (m_process == 0) {
            action();
            _exit(0);
        }
    }
    ~Helper() { end(); }
    Helper(Helper const&) = delete;
    Helper& operator=(Helper const&) = delete;

    void end() {
        if (m_process > 0) {
            kill(m_process, SIGKILL);
            waitpid(m_process, nullptr, 0);
        }
        m_process = 0;
    }

private:
    pid_t m_process;
};

/// Kills children of the test's process, one after the other, at random moments.
/// @param pause between two of them, at the most
void killChildren(pid_t parent, std::chrono::microseconds pause, unsigned seed) {
    std::minstd_rand random(seed);
    std::string const list = "/proc/" + std::to_string(parent) + "/task/" + std::to_string(parent) + "/children";
    for (;;) {
        std::this_thread::sleep_for(pause * (random() % 100) / 100);
        std::ifstream file(list);
        std::vector<pid_t> victims;
        for (pid_t child = 0; file >> child;)
            if (child != getpid())
                victims.push_back(child);
        if (!victims.empty())
            kill(victims[random() % victims.size()], SIGKILL);
    }
}

TEST_F(RunTest, AnyNumberOfJobsGivesTheSameRecord) {
    addMany(40);
    m_tree.plan.newFiles = {"../webcontent/v5DebugHTML/new.html"};
    std::map<std::string, std::string> first;
    for (unsigned const jobs : {1U, 2U, 8U}) {
        m_tree.configuration.jobs = jobs;
        MoDiffRunReport const report = run();
        bool isComplete = false;
        std::map<std::string, std::string> const pairs = pairsIn("out", &isComplete);
        EXPECT_TRUE(isComplete);
        EXPECT_EQ(pairs.size(), 120U);
        EXPECT_EQ(report.exitStatus, 1);
        EXPECT_EQ(report.totals.getCount(MoDiffOutcome::eDifferent), 22U);
        EXPECT_EQ(report.totals.getCount(MoDiffOutcome::eMissing), 40U);
        if (first.empty())
            first = pairs;
        EXPECT_EQ(pairs, first) << jobs;
    }
    EXPECT_EQ(m_events.outcomes.size(), 120U);
    EXPECT_THAT(MoTestTree::read("out/run.jsonl"), HasSubstr("{\"new\":[\"../webcontent/v5DebugHTML/new.html\"]}\n"));
}

TEST_F(RunTest, SummaryIsThatOfTheFileLog) {
    addMany(10);
    m_tree.configuration.jobs = 3;
    m_options.outDirectory.clear();
    m_options.summaryFile = "summary.xml";
    run();
    {
        MoDiffFileLog log("serial.xml");
        for (MoDiffPair const& pair : m_tree.plan.pairs)
            pair.setup->format->makeEngine(pair.setup->settings)->compareMaster(pair.master, {&log});
    }
    EXPECT_EQ(MoTestTree::read("summary.xml"), MoTestTree::read("serial.xml"));
    EXPECT_FALSE(std::filesystem::exists("out"));
}

TEST_F(RunTest, ATimeLimitEndsAScriptWithAllItStarted) {
    addScripted("for detach in (os.getpid, os.setsid):\n"
                "    if os.fork() == 0:\n"
                "        detach()\n"
                "        print(os.getpid(), file=open('strays', 'a'), flush=True)\n"
                "        time.sleep(300)\n"
                "time.sleep(300)\n",
                {"sleeps"});
    m_tree.configuration.timeLimit = 3s;
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(run().exitStatus, 2);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 4s);
    EXPECT_EQ(outcomeOf("sleeps"), MoDiffOutcome::eTimeout);
    std::ifstream strays("strays");
    int count = 0;
    for (pid_t stray = 0; strays >> stray; ++count)
        EXPECT_NE(kill(stray, 0), 0) << "a process stayed behind";
    EXPECT_EQ(count, 2);
    EXPECT_TRUE(MoDiffStrayProcesses::list().empty());
}

TEST_F(RunTest, TheStartOfAScriptHasALimitOfItsOwn) {
    std::string const slow = "import time\ntime.sleep(1.5)\n";
    std::string const main = "import sys\nif __name__ == '__main__':\n    open(sys.argv[1]); open(sys.argv[2])\n";
    struct Row {
        std::string startFile; // of python
        std::string script;
        std::chrono::milliseconds startLimit;
        MoDiffOutcome outcome;
        char const* detail;
    };
    Row const rows[] = {
        {slow, main, 60s, MoDiffOutcome::ePassed, ""},
        {"", slow + main, 60s, MoDiffOutcome::ePassed, ""},
        {slow, main, 500ms, MoDiffOutcome::eTimeout, "the start of its script took longer than 500 ms"},
        {"", slow + main, 500ms, MoDiffOutcome::eTimeout, "the start of its script took longer"},
        {"", main + slow, 60s, MoDiffOutcome::eTimeout, "it took longer than 1 s"}};
    setenv("PYTHONPATH", "start", 1);
    m_tree.configuration.timeLimit = 1s;
    m_tree.add("vmd", "a.vmd", "x", "x");
    for (Row const& row : rows) {
        MoTestTree::write("start/sitecustomize.py", row.startFile);
        MoSuiteTree::writeScript(row.script);
        std::filesystem::remove_all("start/__pycache__");
        m_options.startLimit = row.startLimit;
        run();
        EXPECT_EQ(outcomeOf("a"), row.outcome) << row.startFile << row.script;
        EXPECT_THAT(m_events.details.begin()->second, HasSubstr(row.detail));
    }
    unsetenv("PYTHONPATH");
}

TEST_F(RunTest, AScriptThatFailsCostsOnePair) {
    addScripted("if name == 'eats.vmd':\n" // more than the limit only in all its processes together
                "    for part in range(8):\n"
                "        if os.fork() == 0: break\n"
                "    hoard = bytearray(os.urandom(1 << 20) * 50); time.sleep(300)\n"
                "if name == 'dies.vmd':\n"
                "    os.abort()\n",
                {"eats", "dies", "passes"});
    m_tree.configuration.memoryLimit = 200 << 20;
    m_tree.configuration.timeLimit = 60s;
    EXPECT_EQ(run().exitStatus, 2);
    EXPECT_EQ(outcomeOf("eats"), MoDiffOutcome::eMemory);
    EXPECT_EQ(outcomeOf("dies"), MoDiffOutcome::eCrashed);
    EXPECT_EQ(outcomeOf("passes"), MoDiffOutcome::ePassed);
}

TEST_F(RunTest, AnyWorkerMayDieAtAnyMoment) {
    addMany(60);
    m_tree.configuration.jobs = 3;
    std::chrono::microseconds const undisturbed = measureRun();
    std::map<std::string, std::string> const right = pairsIn("out");
    std::size_t crashed = 0;
    for (unsigned seed = 1; seed <= 20; ++seed) {
        pid_t const parent = getpid();
        Helper const killer([=] { killChildren(parent, undisturbed / 3, seed); });
        MoDiffRunReport const report = run();
        bool isComplete = false;
        std::map<std::string, std::string> const pairs = pairsIn("out", &isComplete);
        EXPECT_TRUE(isComplete);
        ASSERT_EQ(pairs.size(), right.size());
        for (auto const& [id, line] : pairs) {
            bool const isCrashed = line.find("\"crashed\"") != std::string::npos;
            EXPECT_TRUE(isCrashed || line == right.at(id)) << line;
            crashed += isCrashed;
        }
        EXPECT_EQ(report.totals.getCount(MoDiffOutcome::eCrashed) > 0, report.exitStatus == 2);
    }
    EXPECT_GT(crashed, 0U) << "nothing was killed in time";
}

TEST_F(RunTest, AKilledRunIsTakenUp) {
    addMany(200);
    std::chrono::microseconds const all = measureRun();
    std::map<std::string, std::string> const right = pairsIn("out");
    std::minstd_rand random(1);
    std::size_t takenUp = 0;
    for (int round = 0; round < 10; ++round) {
        m_options.resume = false;
        {
            Helper first([this] { run(); });
            std::this_thread::sleep_for(all * (random() % 100) / 100);
            first.end();
        }
        m_options.resume = std::filesystem::file_size("out/run.jsonl") > 0;
        std::string const before = MoTestTree::read("out/run.jsonl");
        if (before.find("\"complete\"") != std::string::npos)
            continue;
        m_events = Events();
        run();
        EXPECT_EQ(m_events.takenUpCount + m_events.startedWith, right.size());
        takenUp += m_events.takenUpCount;
        EXPECT_EQ(pairsIn("out"), right);
    }
    EXPECT_GT(takenUp, 0U);
}

TEST_F(RunTest, FailFastAndSignalsLeaveARecordToBeTakenUp) {
    addMany(200);
    std::map<std::string, std::string> stopped;
    bool isComplete = true;
    m_options.failFast = 3;
    MoDiffRunReport report = run();
    EXPECT_EQ(report.exitStatus, 1);
    EXPECT_FALSE(report.complete);
    stopped = pairsIn("out", &isComplete);
    EXPECT_FALSE(isComplete);
    EXPECT_LT(stopped.size(), 600U);
    EXPECT_GE(report.totals.getFailures(), 3U);

    m_options.failFast = 0;
    m_options.resume = true;
    std::atomic<int> signal{0};
    m_options.signal = &signal;
    m_events.onFinished = [&signal] { signal = SIGTERM; };
    report = run();
    EXPECT_EQ(report.exitStatus, 143);
    EXPECT_THAT(MoTestTree::read("out/run.jsonl"), HasSubstr("{\"complete\":false,\"stopped\":\"SIGTERM\""));
    EXPECT_TRUE(MoDiffStrayProcesses::list().empty());

    signal = 0;
    m_events.onFinished = {};
    EXPECT_EQ(run().exitStatus, 1);
    EXPECT_EQ(pairsIn("out", &isComplete).size(), 600U);
    EXPECT_TRUE(isComplete);
}

TEST_F(RunTest, StatusesOfNewFilesAndOfNothing) {
    EXPECT_EQ(run().exitStatus, 3);
    m_tree.add("html", "a.html", "x", "x");
    EXPECT_EQ(run().exitStatus, 0);
    m_tree.plan.newFiles = {"new"};
    EXPECT_EQ(run().exitStatus, 0);
    m_tree.configuration.newFiles = MoDiffSuiteConfiguration::eNewFail;
    EXPECT_EQ(run().exitStatus, 1);
    m_options.header.shardCount = 2;
    EXPECT_EQ(run().exitStatus, 0) << "the merge judges new files";
    m_tree.plan.selected.clear();
    m_tree.plan.chosen = 1;
    EXPECT_EQ(run().exitStatus, 0) << "more shards than pairs";
    m_tree.plan.unreadable = {"a folder"};
    EXPECT_EQ(run().exitStatus, 2);
    EXPECT_THAT(MoTestTree::read("out/run.jsonl"), HasSubstr("\"unreadable\":[\"a folder\"]"));
}

TEST_F(RunTest, FullDiskEndsTheRunWithItsReason) {
    addMany(200);
    std::string error;
    {
        MoFileSizeLimit const limit(20000);
        try {
            run();
        } catch (std::exception const& raised) {
            error = raised.what();
        }
    }
    EXPECT_THAT(error, HasSubstr("cannot write out/run.jsonl: "));
    EXPECT_TRUE(MoDiffStrayProcesses::list().empty());
    EXPECT_FALSE(pairsIn("out").empty());
}

} // namespace
