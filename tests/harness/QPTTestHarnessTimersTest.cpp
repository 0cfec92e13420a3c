#include "QPTScript.h"

#include "QPTTestTimer.h"

#include <ctime>

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
    std::string const value = std::to_string(cpu);
    EXPECT_EQ("Get Timer: " + value + " milliseconds of CPU time including QPT time\nGet Timer: " + value +
                  " milliseconds of CPU time excluding QPT time\nReset Timer:\n"
                  "Get Timer: -2500 milliseconds of CPU time excluding QPT time\n"
                  "Get Timer: -7 seconds of elapsed time excluding QPT time\n",
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
    EXPECT_NEAR(300000, static_cast<double>(leaked), 20000);
    EXPECT_EQ("Get Memory: " + std::to_string(leaked) + " bytes have been leaked\n", script.console());
    EXPECT_EQ(leaked, harness.getMemory()); // misuse gives the last value again
    EXPECT_EQ(">> Script Error: getMemory() called before a startMemory()\n", script.console());
    harness.startMemory();
    EXPECT_EQ(0, harness.getMemory());
    leak.reset();
    harness.stopMemory();
    EXPECT_EQ(0, harness.getMemory());
}

} // namespace
