#include "QPTTestTimer.h"

#include "QPTTestHarness.h"

#include <ctime>

QPTTestTimer::QPTTestTimer()
    : m_cpuStartTime(std::clock()), m_elapsedStartTime(static_cast<long>(std::time(nullptr))) {
}

QPTTestTimer::~QPTTestTimer() {
    // Unsigned, so that a 32-bit clock may wrap around during the scope.
    unsigned long const ticks = static_cast<unsigned long>(std::clock()) - static_cast<unsigned long>(m_cpuStartTime);
    long const seconds = static_cast<long>(std::difftime(std::time(nullptr), m_elapsedStartTime));
    try {
        QPTTestHarness::instance()->addTimerValues(ticks, static_cast<unsigned long>(seconds));
    } catch (...) { // a figure that cannot be recorded must not replace an error on its way
    }
}
