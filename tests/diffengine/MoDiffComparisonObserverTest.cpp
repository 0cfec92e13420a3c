#include "MoDiffComparisonObserver.h"
#include "MoDiffSingleXlsFileEngine.h"
#include "MoRecordingListener.h"
#include "MoTestTree.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using P = MoDiffNormalizationPatterns;

/// Writes down what it is told, NULs as "0"; the observer from its construction to its end.
class Recorder : public MoDiffComparisonObserver {
public:
    Recorder() : m_before(set(this)) {}
    ~Recorder() override { EXPECT_EQ(this, set(m_before)); }

    void textsRead(char const* master, std::size_t masterLength, char const* actual,
                   std::size_t actualLength) override {
        EXPECT_EQ('\0', master[masterLength] | actual[actualLength]);
        m_told += "read[" + shown(master, masterLength) + "][" + shown(actual, actualLength) + "] ";
    }
    void blockRead(Side side, char const* bytes, std::size_t count) override {
        m_told += (side == eMaster ? "master " : "actual ") + shown(bytes, 1) + std::to_string(count) + ' ';
    }
    void textsCleansed(MoDiffNormalizationPattern const* pattern, std::size_t masterDeleted,
                       std::size_t actualDeleted) override {
        m_told += (pattern ? P::nameOf(pattern) : "CR") + (' ' + std::to_string(masterDeleted)) + '/' +
                  std::to_string(actualDeleted) + ' ';
    }

    std::string told() { return std::exchange(m_told, ""); }

private:
    static std::string shown(char const* bytes, std::size_t length) {
        std::string text(bytes, length);
        std::replace(text.begin(), text.end(), '\0', '0');
        return text;
    }

    MoDiffComparisonObserver* m_before;
    std::string m_told;
};

TEST(MoDiffComparisonObserver, is_told_whole_texts_and_what_each_step_deleted) {
    MoTestTree const tree;
    std::string const nul(1, '\0');
    MoDiffNormalizationPattern const wholeText("(?<=b)c");
    MoDiffLib::Patterns const patterns = {&P::getNewlinePattern(), &wholeText, &P::getIdPattern()};
    struct Row {
        std::string master, actual;
        char const* told;
    };
    Row const rows[] = {
        {"a\r\nbc", "a\nb id=\"x\"", "read[a\r\nbc][a\nb id=\"x\"] CR 1/0 Newline 1/1  1/0 Id 0/7 "},
        {"\r\r\nbcbc", "\r\r\nbcbc", "read[\r\r\nbcbc][\r\r\nbcbc] CR 2/2 Newline 1/1  2/2 Id 0/0 "}, // equal
        {"\n" + nul + "\nx", "\n" + nul + "\n", "read[\n0\nx][\n0\n] CR 0/0 Newline 1/1  0/0 Id 0/0 "},
        {"", "\r", "read[][\r] CR 0/1 Newline 0/0  0/0 Id 0/0 "}};
    for (Row const& row : rows) {
        MoTestTree::write("m", row.master);
        MoTestTree::write("a", row.actual);
        Recorder recorder;
        for (int const writeCleansed : {0, 1}) {
            EXPECT_EQ("pass", outcomeOf(MoDiffLib::textFileComparison("m", "a", patterns, writeCleansed)));
            EXPECT_EQ(row.told, recorder.told());
        }
        std::remove("a");
        outcomeOf(MoDiffLib::textFileComparison("m", "a", patterns, 0));
        EXPECT_EQ("", recorder.told());
    }
}

TEST(MoDiffComparisonObserver, is_told_the_parts_of_a_large_text_together) {
    MoTestTree const tree;
    std::string text;
    for (int line = 0; line < 100000; ++line)
        text += "<td id=\"a\">\r\n\n";
    MoTestTree::write("m", text);
    MoTestTree::write("a", text + "x");
    Recorder recorder;
    outcomeOf(MoDiffLib::textFileComparison("m", "a", {&P::getIdPattern(), &P::getNewlinePattern()}, 0));
    std::string const told = recorder.told();
    EXPECT_EQ("CR 100000/100000 Id 700000/700000 Newline 200000/200000 ", told.substr(told.find("CR")));
}

TEST(MoDiffComparisonObserver, is_told_of_the_spreadsheet_engine_and_of_blocks) {
    MoTestTree const tree;
    Recorder recorder;
    MoTestTree::write("m", "<x:Data>1</x:Data>1");
    MoTestTree::write("a", "<script></script>\r1");
    MoDiffSingleXlsFileEngine const engine(nullptr);
    EXPECT_EQ("pass", outcomeOf(engine.performDiff("m", "a")));
    EXPECT_EQ("read[<x:Data>1</x:Data>1][<script></script>\r1] CR 0/1 Script 0/17 ImageDirectory 0/0 "
              "ExcelChartWidth 0/0 CR 0/0 ExcelData 18/0 ExponentialFloating 0/0 ",
              recorder.told());
    MoTestTree::write("m", "a" + std::string(8191, 'x') + "b" + std::string(9000, 'y') + "m");
    MoTestTree::write("a", "a" + std::string(8191, 'x') + "B" + std::string(9000, 'y') + "a");
    EXPECT_EQ("diff", outcomeOf(MoDiffFileEngine::areFilesIdentical("m", "a")));
    EXPECT_EQ("master a8192 actual a8192 master b8192 actual B8192 ", recorder.told());
    MoTestTree::write("m", "");
    MoTestTree::write("a", "");
    EXPECT_EQ("pass", outcomeOf(MoDiffFileEngine::areFilesIdentical("m", "a")));
    EXPECT_EQ("", recorder.told());
}

// The master is a FIFO, so that the actual file can be touched when both are open.
TEST(MoDiffComparisonObserver, is_told_which_file_changed_while_it_was_read) {
    struct Watcher : MoDiffComparisonObserver {
        Watcher() : before(set(this)) {}
        ~Watcher() override { set(before); }
        void textsRead(char const*, std::size_t, char const*, std::size_t) override {
            told = {file(eMaster), file(eActual)};
        }
        MoDiffComparisonObserver* before;
        std::pair<File, File> told = {};
    };
    MoTestTree const tree;
    ASSERT_EQ(0, mkfifo("m", 0600));
    MoTestTree::write("a", "");
    timespec const times[] = {{}, {1000000000, 0}};
    ASSERT_EQ(0, utimensat(AT_FDCWD, "a", times, 0));
    std::thread writer([] {
        int const fifo = open("m", O_WRONLY);
        std::error_code error;
        auto const isActual = [&](auto const& entry) {
            return std::filesystem::equivalent(entry.path(), "a", error);
        };
        auto const isReading = [] { // the master, so it sleeps: the main thread
            std::string const state = MoTestTree::read("/proc/self/task/" + std::to_string(getpid()) + "/stat");
            return state[state.rfind(')') + 2] == 'S';
        };
        while (std::none_of(std::filesystem::directory_iterator("/proc/self/fd"), {}, isActual) || !isReading())
            std::this_thread::yield();
        utimensat(AT_FDCWD, "a", nullptr, 0);
        unlink("m");
        close(fifo);
    });
    Watcher const watcher;
    EXPECT_EQ("pass", outcomeOf(MoDiffLib::textFileComparison("m", "a", {}, 0)));
    writer.join();
    struct stat status = {};
    ASSERT_EQ(0, stat("a", &status));
    auto const [master, actual] = watcher.told;
    EXPECT_TRUE(master.hasChanged);
    EXPECT_TRUE(actual.hasChanged);
    EXPECT_EQ(1000000000, actual.modified);
    EXPECT_EQ(status.st_ino, actual.inode);
    EXPECT_EQ(status.st_dev, actual.device);
    EXPECT_NE(master.inode, actual.inode);
    MoTestTree::write("m", "");
    outcomeOf(MoDiffLib::textFileComparison("m", "a", {}, 0));
    EXPECT_FALSE(watcher.told.first.hasChanged || watcher.told.second.hasChanged);
}

} // namespace
