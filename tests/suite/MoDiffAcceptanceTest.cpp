#include "MoDiffAcceptance.h"
#include "MoDiffContentHash.h"
#include "MoTestTree.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>

namespace fs = std::filesystem;

namespace {

using Acceptance = MoDiffAcceptance;
using Journal = MoDiffAcceptanceJournal;

/// Masters m/NAME, actual files a/NAME and the directory of a record, r.
class MoDiffAcceptanceTest : public testing::Test {
protected:
    MoDiffAcceptanceTest() {
        for (char const* const name : {"m", "a", "r"})
            fs::create_directory(name);
    }

    static void put(std::string const& name, std::string const& master, std::string const& actual) {
        MoTestTree::write("m/" + name, master);
        MoTestTree::write("a/" + name, actual);
    }
    static std::string hashOf(std::string const& path) {
        auto const hash = MoDiffContentHash::ofFile(path);
        return hash ? hash->digits : "";
    }
    /// The pair as a record tells it now.
    static Acceptance::Request seen(std::string const& name, Journal::Action action = Journal::eReplace) {
        Acceptance::Request request{action, {}};
        request.pair.id = "html:" + name;
        request.pair.master = "m/" + name;
        request.pair.actual = "a/" + name;
        request.pair.hash = {hashOf(request.pair.master), hashOf(request.pair.actual)};
        return request;
    }
    static Acceptance::Answer perform(Acceptance::Request const& request, Acceptance::Options const& options = {}) {
        return Acceptance("r").perform({request}, options).front();
    }
    static long countAccepted() {
        if (!fs::exists("r/accepted.jsonl"))
            return 0;
        std::string const lines = MoTestTree::read("r/accepted.jsonl");
        return std::count(lines.begin(), lines.end(), '\n');
    }

    MoTestTree m_tree;
};

TEST_F(MoDiffAcceptanceTest, ReplacesWhatWasSeen) {
    put("x", "old", "new");
    fs::permissions("m/x", static_cast<fs::perms>(0640));
    Acceptance::Request const request = seen("x");
    EXPECT_EQ(Acceptance::eAccepted, perform(request, {"", false, /*dryRun=*/true}).state);
    EXPECT_EQ("old", MoTestTree::read("m/x"));
    EXPECT_EQ(0, countAccepted());
    EXPECT_EQ(Acceptance::eAccepted, perform(request, {"as agreed", false, false}).state);
    EXPECT_EQ("new", MoTestTree::read("m/x"));
    EXPECT_EQ(static_cast<fs::perms>(0640), fs::status("m/x").permissions());
    EXPECT_EQ(Acceptance::eAlready, perform(request).state);
    std::string const line = MoTestTree::read("r/accepted.jsonl");
    for (char const* const part : {"\"pair\":\"html:x\"", "\"remark\":\"as agreed\"",
                                   "cba06b5736faf67e54b07b561eae94395e774c517a7d910a54369e1263ccfbd4",
                                   "11507a0e2f5e69d5dfa40a62a1bd7b6ee57e6bcd85c67c9b8431b36fff21c437"})
        EXPECT_NE(std::string::npos, line.find(part)) << line;
    EXPECT_EQ(1, countAccepted());
    EXPECT_EQ(1, MoTestTree::count("r")); // no journal is left
}

TEST_F(MoDiffAcceptanceTest, FollowsLinksToTheirFile) {
    put("target", "old", "unused");
    MoTestTree::write("a/link", "new");
    fs::create_symlink("target", "m/link");
    EXPECT_EQ(Acceptance::eAccepted, perform(seen("link")).state);
    EXPECT_TRUE(fs::is_symlink("m/link"));
    EXPECT_EQ("new", MoTestTree::read("m/target"));
}

TEST_F(MoDiffAcceptanceTest, MakesAndRetiresMasters) {
    MoTestTree::write("a/de/x", "new");
    EXPECT_EQ(Acceptance::eAccepted, perform(seen("de/x", Journal::eCreate)).state);
    EXPECT_EQ("new", MoTestTree::read("m/de/x"));
    MoTestTree::write("a/de/x", "newer");
    EXPECT_EQ(Acceptance::eRefused, perform(seen("de/x", Journal::eCreate)).state);
    EXPECT_EQ(Acceptance::eRefused, perform(seen("de/x", Journal::eRetire)).state); // its actual file is there
    fs::remove("a/de/x");
    EXPECT_EQ(Acceptance::eAccepted, perform(seen("de/x", Journal::eRetire)).state);
    EXPECT_FALSE(fs::exists("m/de/x"));
}

TEST_F(MoDiffAcceptanceTest, RefusesWhatIsNotAsItWasSeen) {
    struct Row {
        char const* what;
        std::function<void()> change;
        Acceptance::State state;
        char const* reason;
    };
    auto const write = [](char const* path) { return [path] { MoTestTree::write(path, "other"); }; };
    Row const rows[] = {
        {"actual changed", write("a/x"), Acceptance::eRefused, "the actual file has changed since the run"},
        {"master changed", write("m/x"), Acceptance::eRefused, "the master has changed since the run"},
        {"master gone", [] { fs::remove("m/x"); }, Acceptance::eRefused, "the master is gone"},
        {"actual gone", [] { fs::remove("a/x"); }, Acceptance::eTrouble, "cannot read"},
        {"master protected", [] { fs::permissions("m/x", static_cast<fs::perms>(0444)); }, Acceptance::eRefused,
         "chmod u+w"},
    };
    for (Row const& row : rows) {
        fs::remove("m/x");
        put("x", "old", "new");
        Acceptance::Request const request = seen("x");
        row.change();
        std::string const before = MoTestTree::read("m/x");
        Acceptance::Answer const answer = perform(request);
        EXPECT_EQ(row.state, answer.state) << row.what;
        EXPECT_NE(std::string::npos, answer.reason.find(row.reason)) << row.what << ": " << answer.reason;
        EXPECT_EQ(before, MoTestTree::read("m/x")) << row.what;
    }
    EXPECT_EQ(0, countAccepted());
}

TEST_F(MoDiffAcceptanceTest, KeepsChangesThatAreNotCommitted) {
    put("x", "committed", "new");
    ASSERT_EQ(0, std::system("git init -q . && git add m && git -c user.name=n -c user.email=e commit -qm m"));
    put("x", "edited", "new");
    EXPECT_EQ(Acceptance::eRefused, perform(seen("x")).state);
    EXPECT_EQ("edited", MoTestTree::read("m/x"));
    EXPECT_EQ(Acceptance::eAccepted, perform(seen("x"), {"", /*force=*/true, false}).state);
    put("x", "committed", "newer");
    EXPECT_EQ(Acceptance::eAccepted, perform(seen("x")).state);
}

TEST_F(MoDiffAcceptanceTest, FullDiskLeavesTheMaster) {
    put("x", "old", std::string(100000, 'x'));
    Acceptance::Request const request = seen("x");
    pid_t const child = fork();
    if (child == 0) {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit const limit = {50000, 50000};
        setrlimit(RLIMIT_FSIZE, &limit);
        _exit(perform(request).state);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(Acceptance::eTrouble, WEXITSTATUS(status));
    EXPECT_EQ("old", MoTestTree::read("m/x"));
    EXPECT_EQ(1, MoTestTree::count("m"));
    EXPECT_EQ(0, countAccepted());
}

TEST_F(MoDiffAcceptanceTest, FinishesWhatWasKilled) {
    int const pairs = 12;
    std::mt19937 random(20261124);
    for (int round = 0; round < 20; ++round) {
        std::vector<Acceptance::Request> requests;
        for (int pair = 0; pair < pairs; ++pair) {
            std::string const name = std::to_string(pair);
            put(name, "old " + std::to_string(round), "new " + std::to_string(round));
            requests.push_back(seen(name));
        }
        fs::remove("r/accepted.jsonl");
        pid_t const child = fork();
        if (child == 0) {
            Acceptance("r").perform(requests, {});
            _exit(0);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 30000));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        bool const wasInterrupted = fs::exists("r/accept.journal");
        for (Acceptance::Answer const& answer : Acceptance("r").finishInterrupted())
            EXPECT_EQ(Acceptance::eAccepted, answer.state) << answer.reason;
        long accepted = 0;
        for (int pair = 0; pair < pairs; ++pair) {
            std::string const master = MoTestTree::read("m/" + std::to_string(pair));
            EXPECT_TRUE(master == "new " + std::to_string(round) || master == "old " + std::to_string(round))
                << master;
            accepted += master.front() == 'n';
        }
        EXPECT_TRUE(accepted == pairs || (accepted == 0 && !wasInterrupted)) << accepted;
        EXPECT_EQ(accepted, countAccepted());
        EXPECT_EQ(pairs, MoTestTree::count("m")); // nothing temporary
        EXPECT_FALSE(fs::exists("r/accept.journal"));
    }
}

} // namespace
