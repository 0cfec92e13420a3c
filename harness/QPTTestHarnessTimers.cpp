// The stopwatch and the memory capture of QPTTestHarness.
#include "QPTTestHarness.h"

#include "KLTThreadGuard.h"
#include "KLTUtMemory.h"

#include <cstdio>

namespace {

enum MemoryState { kMemoryIdle = 0, kMemoryRunning = 1, kMemoryStopped = 2 };

/// Ticks of clock() as milliseconds, truncated; multiplying first could overflow.
long toMilliseconds(long ticks) {
    long long const perSecond = CLOCKS_PER_SEC;
    return static_cast<long>(ticks / perSecond * 1000 + ticks % perSecond * 1000 / perSecond);
}

/// A 32-bit clock may wrap around between start and stop, so it is subtracted without a sign; the result has one.
long cpuMilliseconds(std::clock_t start, std::clock_t stop, unsigned long harnessTicks) {
    return toMilliseconds(
        static_cast<long>(static_cast<unsigned long>(stop) - static_cast<unsigned long>(start) - harnessTicks));
}

long elapsedSeconds(std::time_t start, std::time_t stop, unsigned long harnessSeconds) {
    long const seconds = static_cast<long>(std::difftime(stop, start));
    return static_cast<long>(static_cast<unsigned long>(seconds) - harnessSeconds);
}

} // namespace

void QPTTestHarness::startTimer() {
    if (m_cpuStart || m_elapsedStart) {
        logScriptError(">> Script Error: startTimer() called while timer is running");
        return;
    }
    m_cpuStart = std::clock();
    m_elapsedStart = std::time(nullptr);
    writeLine("Start Timer:", eLogConcise);
}

void QPTTestHarness::stopTimer() {
    if (!(m_cpuStart || m_elapsedStart) || (m_cpuStop && m_elapsedStop)) {
        logScriptError(">> Script Error: stopTimer() called while timer not running");
        return;
    }
    m_cpuStop = std::clock();
    m_elapsedStop = std::time(nullptr);
    writeLine("Stop Timer:", eLogConcise);
}

void QPTTestHarness::resetTimer() {
    if (isTimerRunning()) {
        logScriptError(">> Script Error: resetTimer() called while timer is running");
        return;
    }
    m_cpuStart = m_cpuStop = 0;
    m_elapsedStart = m_elapsedStop = 0;
    writeLine("Reset Timer:", eLogConcise);
}

bool QPTTestHarness::isTimerRunning() const {
    return (m_cpuStart && !m_cpuStop) || (m_elapsedStart && !m_elapsedStop);
}

long QPTTestHarness::getTimer(eTimerType type, int includeHarnessTime) {
    if (isTimerRunning()) {
        logScriptError(">> Script Error: getTimer() called while timer is running");
        return 0;
    }
    bool const isCpu = type == eCpuTime;
    unsigned long const& total = isCpu ? m_harnessCpuTime : m_harnessElapsedTime;
    unsigned long const excluded = includeHarnessTime ? 0 : harnessTime(total);
    long const value = isCpu ? cpuMilliseconds(m_cpuStart, m_cpuStop, excluded)
                             : elapsedSeconds(m_elapsedStart, m_elapsedStop, excluded);
    char line[128];
    std::snprintf(line, sizeof line, "Get Timer: %ld %s of %s time %s QPT time", value,
                  isCpu ? "milliseconds" : "seconds", isCpu ? "CPU" : "elapsed",
                  includeHarnessTime ? "including" : "excluding");
    writeLine(line, eLogNormal);
    return value;
}

unsigned long QPTTestHarness::harnessTime(unsigned long const& total) {
    KLTThreadGuard const guard(m_timerLock);
    return total;
}

void QPTTestHarness::addTimerValues(unsigned long cpuTicks, unsigned long elapsedSeconds) {
    KLTThreadGuard const guard(m_timerLock);
    m_harnessCpuTime += cpuTicks;
    m_harnessElapsedTime += elapsedSeconds;
}

void QPTTestHarness::startMemory() {
    if (m_memoryState == kMemoryRunning) {
        logScriptError(">> Script Error: startMemory() called while memory capture is running");
        return;
    }
    m_memoryState = kMemoryRunning;
    m_memoryLeaked = 0;
    m_memoryStart = KLTUtMemory::getMemoryConsumption(nullptr, nullptr);
    writeLine("Start Memory:", eLogConcise);
}

void QPTTestHarness::stopMemory() {
    if (m_memoryState != kMemoryRunning) {
        logScriptError(">> Script Error: stopMemory() called while memory capture not running");
        return;
    }
    m_memoryState = kMemoryStopped;
    unsigned long const current = KLTUtMemory::getMemoryConsumption(nullptr, nullptr);
    m_memoryLeaked = current > m_memoryStart ? current - m_memoryStart : 0;
    m_memoryStart = 0;
    writeLine("Stop Memory:", eLogConcise);
}

long QPTTestHarness::getMemory() {
    if (m_memoryState == kMemoryIdle)
        logScriptError(">> Script Error: getMemory() called before a startMemory()");
    else if (m_memoryState == kMemoryRunning)
        logScriptError(">> Script Error: getMemory() called while memory capture is running");
    long const leaked = static_cast<long>(m_memoryLeaked);
    if (m_memoryState != kMemoryStopped)
        return leaked;
    m_memoryState = kMemoryIdle;
    char line[64];
    std::snprintf(line, sizeof line, "Get Memory: %ld bytes have been leaked", leaked);
    writeLine(line, eLogNormal);
    return leaked;
}
