#include "KLTFmDir.h"
#include "MoFileHandle.h"
#include "MoGlob.h"
#include "MoHelper.h"
#include "MoRecordingListener.h"
#include "MoTestTree.h"

#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAreArray;
using Names = std::list<std::string>;

TEST(KLTFmDir, splits_at_the_last_slash_and_joins_with_one) {
    // clang-format off
    char const* const rows[][5] = { // path, directory, base and extension of its file, directory joined with "/M"
        {"a/b/c.txt", "a/b", "c", "txt", "a/b/M"}, {"r.26.html", ".", "r.26", "html", "./M"},
        {"/c.", "/", "c", "", "/M"}, {"//c", "/", "c", "", "/M"}, {"/a//c", "/a", "c", "", "/a/M"}, {"a/b/", "a/b", "", "", "a/b/M"},
        {"a\\.b", ".", "a\\", "b", "./M"}};
    // clang-format on
    for (auto const& [path, directory, base, extension, joined] : rows) {
        std::string head, tail, type, empty;
        KLTFmDir::splitPath(path, &head, nullptr);
        KLTFmDir::splitPath(path, nullptr, &tail);
        MoHelper::fileBasename(tail, tail, type); // an output may be the input
        EXPECT_EQ(std::string(directory) + "|" + base + "|" + extension, head + "|" + tail + "|" + type) << path;
        KLTFmDir::joinPath(head, "/M");
        KLTFmDir::joinPath(empty, "M");
        EXPECT_EQ(joined + std::string("M"), head + empty) << path;
    }
}

TEST(KLTFmDir, exists_asks_for_kind_and_mode_bits_behind_links) {
    MoTestTree const tree;
    fs::create_directory("directory");
    MoTestTree::write("file", "x");
    MoTestTree::write("unreadable", "x");
    fs::permissions("unreadable", fs::perms(0244));
    for (char const* target : {"directory", "file", "unreadable", "nowhere"}) {
        fs::create_symlink(target, std::string("to_") + target);
        for (std::string const& path : {target + std::string(), std::string("to_") + target}) {
            EXPECT_EQ(target == std::string("file"), KLTFmDir::exists(path.c_str(), 0x8100)) << path;
            EXPECT_EQ(target == std::string("directory"), KLTFmDir::exists(path.c_str(), 0x4100)) << path;
        }
    }
    EXPECT_FALSE(KLTFmDir::exists("file", 0x8140)); // every bit asked for must be set
}

Names glob(std::string const& pattern) {
    Names files;
    int const count = MoGlob::globFiles(pattern.c_str(), files);
    EXPECT_EQ(static_cast<int>(files.size()), count);
    return files;
}

TEST(MoGlob, only_the_star_is_special_and_order_is_by_byte) {
    MoTestTree const tree;
    for (char const* name : {"r.csv", "r_2.csv", "rB.csv", "r a.csv", "r\xC3\xA9.csv", "r[1].csv", "r1.csv", "r?.csv",
                             "r\\.csv", "R.csv", "r.csv.bak", "xr.csv", "ab.ab.c"})
        MoTestTree::write(fs::path("m") / name, "");
    fs::create_directory("m/rdir.csv");
    fs::create_directory_symlink("rdir.csv", "m/rdirlink.csv");
    fs::create_symlink("r.csv", "m/rlink.csv");
    fs::create_symlink("nowhere", "m/rnowhere.csv");
    // clang-format off
    std::pair<char const*, Names> const rows[] = {
        {"m/r*.csv",
         {"m/r a.csv", "m/r.csv", "m/r1.csv", "m/r?.csv", "m/rB.csv", "m/r[1].csv", "m/r\\.csv", "m/r_2.csv",
          "m/rlink.csv", "m/rnowhere.csv", "m/r\xC3\xA9.csv"}},
        {"m/r[1]*.csv", {"m/r[1].csv"}}, {"m/r?*.csv", {"m/r?.csv"}}, {"m/r\\*.csv", {"m/r\\.csv"}},
        {"m/r.csv", {"m/r.csv"}}, {"m/a*b*c", {"m/ab.ab.c"}}, {"m/*b.c", {"m/ab.ab.c"}}, {"m/a*b", {}},
        {"m/ab*ab.ab.c", {}}, {"m/R**", {"m/R.csv"}}, {"m/rdir*", {}}, {"m/*/r*", {}}, {"nowhere/r*", {}},
        {"m/r.csv/r*", {}}, {"./m//R*", {"./m//R.csv"}}};
    // clang-format on
    for (auto const& [pattern, expected] : rows)
        EXPECT_THAT(glob(pattern), ElementsAreArray(expected)) << pattern;
    fs::current_path("m");
    Names files = {"first"};
    MoGlob::globFiles("r.csv*", files);
    EXPECT_THAT(files, ElementsAreArray({"first", "r.csv", "r.csv.bak"}));
}

TEST(MoGlob, a_remembered_listing_never_hides_a_change) {
    MoTestTree const tree;
    Names expected;
    for (int i = 100; i < 400; ++i) { // faster than time stamps advance
        expected.push_back("m/r" + std::to_string(i));
        MoTestTree::write(expected.back(), "");
        ASSERT_EQ(expected, glob("m/r*"));
    }
    std::function<void()> const changes[] = {
        [&] { fs::remove(expected.front()), expected.pop_front(); },
        [&] { fs::rename(expected.back(), "m/r999"), expected.back() = "m/r999"; },
        [&] { fs::rename("m", "old"), MoTestTree::write("m/r", ""), expected = {"m/r"}; }};
    for (auto const& change : changes) {
        std::this_thread::sleep_for(std::chrono::milliseconds(150)); // long enough to be remembered
        ASSERT_EQ(expected, glob("m/r*"));
        change();
        EXPECT_EQ(expected, glob("m/r*"));
    }
}

TEST(MoFileHandle, opens_what_can_be_read_or_written_and_closes_it) {
    MoTestTree const tree;
    fs::permissions(tree.root(), fs::perms(0755));
    MoTestTree::write("file", "text");
    MoTestTree::write("secret", "text");
    fs::permissions("secret", fs::perms::none);
    ASSERT_EQ(0, mkfifo("fifo", 0666));
    std::thread writer([] {
        std::ofstream fifo("fifo");
        std::this_thread::sleep_for(std::chrono::milliseconds(1200)); // the reader waits for as long as it takes
        fifo << "te" << std::flush;
        std::this_thread::sleep_for(std::chrono::milliseconds(100)); // and for the rest
        fifo << "xt";
    });
    // clang-format off
    struct {
        char const *name, *mode;
        bool opens;
    } const rows[] = {{"fifo", "r", true}, {"file", "r", true}, {"file", "rb", true}, {"nowhere", "r", false},
                      {".", "r", false}, {"new", "w", true}, {".", "w", false}, {"nowhere/new", "w", false},
                      {"secret", "r", false}};
    // clang-format on
    uid_t const self = geteuid();
    long const before = MoTestTree::count("/proc/self/fd");
    for (auto const& row : rows) {
        if (self == 0 && row.name == std::string("secret")) { // root may read everything
            ASSERT_EQ(0, seteuid(65534));
        }
        {
            MoFileHandle const file(row.name, row.mode);
            char text[8] = {};
            EXPECT_EQ(row.opens, file != nullptr) << row.name << " " << row.mode;
            if (file && *row.mode == 'r') {
                EXPECT_EQ(4U, std::fread(text, 1, sizeof text, file)) << row.name;
                EXPECT_NE(0, fcntl(fileno(file), F_GETFD) & FD_CLOEXEC) << row.name; // no child inherits it
            }
        }
        if (geteuid() != self) {
            ASSERT_EQ(0, seteuid(self));
        }
    }
    writer.join();
    EXPECT_EQ(before, MoTestTree::count("/proc/self/fd"));
}

/// Holds a write lease on a file in a process of its own, and gives it back a while after another one wants the file.
class LeaseHolder {
public:
    explicit LeaseHolder(char const* name) {
        int ready[2];
        if (pipe(ready) != 0 || (m_process = fork()) < 0)
            throw std::runtime_error("cannot make a process");
        if (m_process == 0)
            hold(name, ready[1]);
        close(ready[1]);
        char granted = 0;
        m_isGranted = read(ready[0], &granted, 1) == 1 && granted == 'y';
        close(ready[0]);
    }
    ~LeaseHolder() {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
    bool isGranted() const { return m_isGranted; }

private:
    [[noreturn]] static void hold(char const* name, int ready) {
        sigset_t wanted;
        sigemptyset(&wanted);
        sigaddset(&wanted, SIGIO);
        sigprocmask(SIG_BLOCK, &wanted, nullptr);
        int const file = open(name, O_RDWR);
        bool const granted = fcntl(file, F_SETLEASE, F_WRLCK) == 0;
        if (write(ready, granted ? "y" : "n", 1) != 1 || !granted)
            _exit(1);
        int signal = 0;
        sigwait(&wanted, &signal);
        usleep(100000);
        fcntl(file, F_SETLEASE, F_UNLCK);
        _exit(0);
    }

    pid_t m_process = 0;
    bool m_isGranted = false;
};

TEST(MoFileHandle, waits_for_a_file_that_another_process_has_a_lease_on) {
    MoTestTree const tree;
    MoTestTree::write("file", "text");
    for (bool const asText : {true, false}) {
        LeaseHolder const holder("file");
        if (!holder.isGranted())
            GTEST_SKIP() << "no leases on this file system";
        if (asText)
            EXPECT_NE(nullptr, MoFileHandle("file", "r"));
        else
            EXPECT_EQ("pass", outcomeOf(MoDiffFileEngine::areFilesIdentical("file", "file")));
    }
}

} // namespace
