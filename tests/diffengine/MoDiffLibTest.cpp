#include "MoRecordingListener.h"
#include "MoTestTree.h"

#include <atomic>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using L = MoDiffLib;
using P = MoDiffNormalizationPatterns;

L::Text newText(std::string const& content) {
    L::Text text(new char[content.size() + 1]);
    std::memcpy(text.get(), content.c_str(), content.size() + 1);
    return text;
}

TEST(MoDiffLib, compares_files_as_text_without_carriage_returns) {
    MoTestTree const tree;
    L::Patterns const ids = {&P::getIdPattern(), &P::getNewlinePattern()};
    std::string const nul(1, '\0');
    // clang-format off
    std::string const rows[][4] = { // master, actual, outcome without patterns and with ids and line feeds deleted
        {"", "", "pass", "pass"}, {"a\r\nb\r", "a\nb", "pass", "pass"}, {"\r\r", "", "pass", "pass"},
        {"a\nb", "ab", "diff", "pass"}, {"<i id=\"a\">x", "<i id=\"b\">x", "diff", "pass"},
        {"<i id=\"a\">x", "<i id=\"b\">y", "diff", "normalized 3 [<i>x][<i>y]"},
        {"<i id=\r\"a\">", "<i>", "diff", "pass"},
        {"ab", "abc", "diff", "normalized 2 [ab][abc]"}, {"\n", "x", "diff", "normalized 0 [][x]"},
        {"a" + nul + "b", "a" + nul + "c\n", "pass", "pass"}, {nul + "x", "", "pass", "pass"},
        {"\xE9" + nul + "\r", "\xC3\xA9", "diff", "normalized 0 [\xE9][\xC3\xA9]"}};
    // clang-format on
    long const before = MoTestTree::count("/proc/self/fd");
    for (auto const& [master, actual, plain, cleansed] : rows) {
        MoTestTree::write("m", master);
        MoTestTree::write("a", actual);
        EXPECT_EQ(plain, outcomeOf(L::textFileComparison("m", "a", {}, 0))) << master;
        EXPECT_EQ(cleansed, outcomeOf(L::textFileComparison("m", "a", ids, 0))) << master;
    }
    EXPECT_EQ("missing no", outcomeOf(L::textFileComparison("no", "nor this", ids, 1)));
    EXPECT_EQ("missing .", outcomeOf(L::textFileComparison("m", ".", ids, 1)));
    EXPECT_EQ(before, MoTestTree::count("/proc/self/fd"));
    EXPECT_EQ(2, MoTestTree::count(".")); // nothing was written
}

TEST(MoDiffLib, writes_cleansed_texts_on_request_and_skips_what_it_cannot_write) {
    MoTestTree const tree;
    MoTestTree::write("m", "<i id=\"a\">\r\n\xE9");
    MoTestTree::write("a", "<i id=\"b\">\r\n\xE9");
    MoTestTree::write("a.cleansed", "an older and longer text");
    EXPECT_EQ("pass", outcomeOf(L::textFileComparison("m", "a", {&P::getIdPattern()}, 2)));
    EXPECT_EQ("<i>\n\xE9|<i>\n\xE9", MoTestTree::read("m.cleansed") + "|" + MoTestTree::read("a.cleansed"));
    std::filesystem::remove("m.cleansed");
    std::filesystem::create_directory("m.cleansed");
    EXPECT_EQ("diff", outcomeOf(L::textFileComparison("m", "a", {}, 1)));
    EXPECT_EQ("<i id=\"b\">\n\xE9", MoTestTree::read("a.cleansed"));
}

TEST(MoDiffLib, position_is_the_first_difference_whichever_text_comes_first) {
    std::string const text(10000, 'a');
    for (std::size_t const at : {0U, 1U, 4095U, 4096U, 4097U, 8191U, 8192U, 9999U}) {
        std::string changed = text;
        changed[at] = '\xFF';
        for (std::string const& other : {changed, text.substr(0, at), changed.substr(0, at + 1)}) {
            L::Text const master = newText(text), actual = newText(other); // no byte too many: an over-read shows
            EXPECT_EQ(static_cast<long>(at), L::compareStrings(master.get(), actual.get()));
            EXPECT_EQ(static_cast<long>(at), L::compareStrings(actual.get(), master.get()));
            EXPECT_EQ(-1, L::compareStrings(actual.get(), newText(other).get()));
        }
    }
}

TEST(MoDiffLib, cleansing_with_lengths_follows_the_list_too) {
    MoDiffNormalizationPattern const b("b"), ac("ac");
    L::Text const master = newText("\rabc\r"), current = newText("a\rc");
    L::cleanse(master.get(), current.get(), {&ac, &b}, 0, 0);
    EXPECT_TRUE(!std::memcmp("ac\0\0\0", master.get(), 6) && !std::memcmp("\0\0\0", current.get(), 4));
}

TEST(MoDiffLib, reads_the_rest_of_a_stream_and_counts_one_that_cannot_seek_as_empty) {
    MoTestTree const tree;
    auto const slurped = [](MoFileHandle& file) { return std::string(L::Text(L::slurpFile(file)).get()); };
    MoTestTree::write("file", "0123456789");
    MoFileHandle file("file", "r");
    ASSERT_EQ(0, std::fseek(file, 4, SEEK_SET));
    std::ofstream("file", std::ios::app) << "ab"; // grown before its length is taken
    EXPECT_EQ("456789ab", slurped(file));
    char const online[] = "/sys/devices/system/cpu/online"; // claims a page, like a file that shrinks meanwhile
    MoFileHandle shorter(online, "r");
    EXPECT_TRUE(!shorter || MoTestTree::read(online) == slurped(shorter));
    ASSERT_EQ(0, mkfifo("fifo", 0666));
    for (std::string const content : {"", "text"}) {
        std::thread writer([content] { std::ofstream("fifo") << content; });
        MoFileHandle fifo("fifo", "r");
        writer.join();
        if (content.empty()) {
            EXPECT_EQ("", slurped(fifo));
        } else {
            EXPECT_THROW(slurped(fifo), KLTAssertError);
        }
    }
}

TEST(MoDiffLib, a_read_error_fails_whatever_its_reason) {
    MoTestTree const tree;
    ASSERT_EQ(0, mkfifo("fifo", 0666));
    int const silentWriter = open("fifo", O_RDWR);
    struct sigaction interrupt = {};
    interrupt.sa_handler = [](int) {};
    sigaction(SIGUSR1, &interrupt, nullptr); // without SA_RESTART: a read that waits ends with EINTR
    MoFileHandle file("fifo", "r");
    ASSERT_TRUE(file);
    std::atomic<bool> hasEnded{false};
    std::thread disturber([&, reader = pthread_self()] {
        for (int i = 0; i < 200 && !hasEnded; ++i) {
            pthread_kill(reader, SIGUSR1);
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        close(silentWriter); // so that reading ends in any case
    });
    EXPECT_THROW(L::Text(L::slurpFile(file)), KLTAssertError);
    hasEnded = true;
    disturber.join();
}

} // namespace
