#include "QPTScript.h"

#include "MoDiffNormalizationPattern.h"
#include "MoGlob.h"
#include "QPTTestTimer.h"

#include <algorithm>
#include <ctime>
#include <vector>

namespace {

using Harness = QPTTestHarness;

TEST(HarnessTimers, walk_through_every_call_in_every_state) {
    auto const start = [](Harness& h) { h.startTimer(); };
    auto const stop = [](Harness& h) { h.stopTimer(); };
    auto const reset = [](Harness& h) { h.resetTimer(); };
    auto const get = [](Harness& h) { EXPECT_EQ(0, h.getTimer(eElapsedTime, 1)); };
    auto const startMemory = [](Harness& h) { h.startMemory(); };
    auto const stopMemory = [](Harness& h) { h.stopMemory(); };
    auto const getMemory = [](Harness& h) { EXPECT_EQ(0, h.getMemory()); };
    struct Step {
        void (*call)(Harness&);
        char const* log; // of a script error what follows its start
    } const steps[] = {
        {stop, "stopTimer() called while timer not running"},
        {get, "Get Timer: 0 seconds of elapsed time including QPT time"},
        {reset, "Reset Timer:"},
        {start, "Start Timer:"},
        {start, "startTimer() called while timer is running"},
        {reset, "resetTimer() called while timer is running"},
        {get, "getTimer() called while timer is running"},
        {stop, "Stop Timer:"},
        {stop, "stopTimer() called while timer not running"},
        {start, "startTimer() called while timer is running"},
        {reset, "Reset Timer:"},
        {start, "Start Timer:"},
        {stop, "Stop Timer:"},
        {stopMemory, "stopMemory() called while memory capture not running"},
        {getMemory, "getMemory() called before a startMemory()"},
        {startMemory, "Start Memory:"},
        {startMemory, "startMemory() called while memory capture is running"},
        {getMemory, "getMemory() called while memory capture is running"},
        {stopMemory, "Stop Memory:"},
        {stopMemory, "stopMemory() called while memory capture not running"},
        {startMemory, "Start Memory:"},
        {stopMemory, "Stop Memory:"},
    };
    QPTScript script;
    script.startTest();
    long errors = 0;
    for (Step const& step : steps) {
        step.call(*script.harness);
        bool const isError = std::string(step.log).find("() called ") != std::string::npos;
        EXPECT_EQ((isError ? ">> Script Error: " : "") + std::string(step.log) + "\n", script.console());
        EXPECT_EQ(errors += isError ? 1 : 0, script.harness->getCurrentTest()->getScriptErrorCount());
    }
}

TEST(HarnessTimers, values_count_from_start_to_stop_with_or_without_the_harness) {
    QPTScript script;
    Harness& harness = *script.harness;
    harness.startTimer();
    std::clock_t const start = std::clock();
    while (std::clock() - start < CLOCKS_PER_SEC / 20) {
    }
    harness.stopTimer();
    script.console();
    long const cpu = harness.getTimer(eCpuTime, 1);
    EXPECT_TRUE(cpu >= 50 && cpu < 5000) << cpu;
    EXPECT_EQ(cpu, harness.getTimer(eCpuTime, 0));
    harness.resetTimer();
    harness.addTimerValues(CLOCKS_PER_SEC * 2 + CLOCKS_PER_SEC / 2 + 1, 7);
    EXPECT_EQ(-2500, harness.getTimer(eCpuTime, 0));
    EXPECT_EQ(-7, harness.getTimer(static_cast<eTimerType>(5), 0));
    harness.addTimerValues(0UL - (CLOCKS_PER_SEC * 4 + CLOCKS_PER_SEC / 2 + 1), 0); // now 2 seconds below zero
    EXPECT_EQ(2000, harness.getTimer(eCpuTime, 0));
    std::string const value = std::to_string(cpu);
    EXPECT_EQ("Get Timer: " + value + " milliseconds of CPU time including QPT time\nGet Timer: " + value +
                  " milliseconds of CPU time excluding QPT time\nReset Timer:\n"
                  "Get Timer: -2500 milliseconds of CPU time excluding QPT time\n"
                  "Get Timer: -7 seconds of elapsed time excluding QPT time\n"
                  "Get Timer: 2000 milliseconds of CPU time excluding QPT time\n",
              script.console());
}

TEST(HarnessTimers, scope_adds_its_time_to_the_harness_also_when_the_clock_has_wrapped) {
    QPTScript script(eLogNone);
    {
        QPTTestTimer timer;
        timer.setCpuStartTime(timer.getCpuStartTime() - 30 * CLOCKS_PER_SEC); // before 0
        timer.setElapsedStartTime(timer.getElapsedStartTime() - 100);
    }
    EXPECT_NEAR(-30000, static_cast<double>(script.harness->getTimer(eCpuTime, 0)), 500);
    EXPECT_NEAR(-100, static_cast<double>(script.harness->getTimer(eElapsedTime, 0)), 5);
    script.end(0);
    { QPTTestTimer const withoutHarness; }
    script.harness = Harness::instance();
    EXPECT_NEAR(0, static_cast<double>(script.harness->getTimer(eCpuTime, 0)), 500);
}

TEST(HarnessTimers, leaked_bytes_are_reported_and_a_shrunken_heap_is_no_leak) {
    QPTScript script;
    Harness& harness = *script.harness;
    harness.startMemory();
    auto leak = std::make_unique<std::string>(300000, 'x');
    harness.stopMemory();
    script.console();
    long const leaked = harness.getMemory();
    EXPECT_NEAR(300000, static_cast<double>(leaked), 3000);
    EXPECT_EQ("Get Memory: " + std::to_string(leaked) + " bytes have been leaked\n", script.console());
    EXPECT_EQ(leaked, harness.getMemory()); // misuse gives the last value again
    EXPECT_EQ(">> Script Error: getMemory() called before a startMemory()\n", script.console());
    harness.startMemory();
    EXPECT_EQ(0, harness.getMemory());
    leak.reset();
    harness.stopMemory();
    EXPECT_EQ(0, harness.getMemory());
}

/// What a capture tells about some work.
template<typename Work>
long leakedBy(Work work) {
    Harness& harness = *Harness::instance();
    harness.startMemory();
    work();
    harness.stopMemory();
    return harness.getMemory();
}

TEST(HarnessMemory, what_is_freed_leaves_nothing_and_what_is_kept_all_of_it) {
    QPTScript const script;
    std::vector<std::unique_ptr<char[]>> blocks(420);
    long kept = 0; // within the blocks; the allocator adds a few bytes to each
    auto const fill = [&] {
        kept = 0;
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            std::size_t const size = 24 + i % 60 * 16;
            blocks[i].reset(new char[size]);
            kept += static_cast<long>(size);
        }
    };
    auto const clear = [&] { std::for_each(blocks.begin(), blocks.end(), [](auto& block) { block.reset(); }); };
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(0, leakedBy([&] { fill(), clear(); }));
        long const leaked = leakedBy(fill);
        EXPECT_TRUE(leaked >= kept && leaked <= kept + kept / 100 + 420 * long{sizeof(std::size_t)}) << leaked;
        clear();
        std::string large;
        EXPECT_NEAR(205000, static_cast<double>(leakedBy([&] { large.assign(205000, 'x'); })), 2050);
    }
}

TEST(HarnessMemory, what_the_library_builds_at_first_use_and_keeps_is_no_leak) {
    QPTScript const script;
    MoDiffNormalizationPattern const pattern(R"((?s)\bname="[a-z]{2,40}.*?")");
    std::string text = "<a name=\"abc\" href=\"x\">";
    EXPECT_EQ(0, leakedBy([&] { pattern.normalizeText(text.data()); }));
    EXPECT_STREQ("<a  href=\"x\">", text.c_str());
    EXPECT_EQ(0, leakedBy([&] {
                  std::list<std::string> files;
                  EXPECT_LT(100, MoGlob::globFiles("/usr/bin/*", files));
              }));
    auto own = std::make_unique<MoDiffNormalizationPattern>("ab+?c");
    own->normalizeText(text.data());
    EXPECT_EQ(0, leakedBy([&] { own.reset(); })); // what is given back is taken off once
    EXPECT_NEAR(50000, static_cast<double>(leakedBy([&] { text.assign(50000, 'x'); })), 500);
}

} // namespace
