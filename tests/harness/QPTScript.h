#ifndef QPT_SCRIPT_H
#define QPT_SCRIPT_H

#include "MoTestTree.h"
#include "QPTTestCase.h"
#include "QPTTestHarness.h"

#include <future>
#include <gmock/gmock.h>
#include <iostream>
#include <sstream>
#include <time.h>

/// A script in a fresh working directory with the console caught; whatever happens, no harness is left behind.
class QPTScript : public MoTestTree {
public:
    explicit QPTScript(eLogLevel level = eLogNormal) : m_previous(std::cout.rdbuf(m_console.rdbuf())) {
        harness->setLogLevel(level);
    }
    ~QPTScript() {
        if (harness)
            end(0);
        std::cout.rdbuf(m_previous);
    }

    /// Starts the script and a test, and forgets what that has written.
    void startTest() {
        harness->startScript(nullptr, 0);
        harness->startTest("t", nullptr);
        console();
    }
    int end(int toConsole) { return std::exchange(harness, nullptr)->endScript(toConsole); }

    /// What the console has received since the last call, time stamps masked.
    std::string console() {
        std::string const text = m_console.str();
        m_console.str("");
        return masked(text);
    }
    static std::string masked(std::string text) {
        struct tm ignored;
        for (std::string const label : {" Started: ", " Finished: "})
            for (auto at = text.find(label); at != std::string::npos; at = text.find(label, at)) {
                at += label.length();
                if (strptime(&text[at], "%a %b %d %H:%M:%S %Y", &ignored) == &text[at] + 24)
                    text.replace(at, 24, "(24 characters of time)");
            }
        return text;
    }
    /// Removes a part wherever it stands and counts it.
    static long remove(std::string& text, std::string const& part) {
        long count = 0;
        for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at), ++count)
            text.erase(at, part.length());
        return count;
    }

    void expectOutputLockFree() {
        auto const lockAndUnlock = [this] { harness->lockOutput(1), harness->lockOutput(0); };
        auto const done = std::async(std::launch::async, lockAndUnlock);
        bool const isFree = done.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
        EXPECT_TRUE(isFree);
        if (!isFree)
            harness->lockOutput(0); // this thread has forgotten to
    }

    QPTTestHarness* harness = QPTTestHarness::instance();

private:
    std::ostringstream m_console;
    std::streambuf* m_previous;
};

#endif
