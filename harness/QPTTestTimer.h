#ifndef QPT_TEST_TIMER_H
#define QPT_TEST_TIMER_H

#include "KLTExport.h"

/// Adds the CPU and wall time of its scope to the harness's own time, which QPTTestHarness::getTimer() can leave
/// out: { QPTTestTimer const timer; ...work of the harness, not of the script... }
/// Scopes may end on any thread. One that ends without a harness makes one; it never raises.
class KLT_EXPORT QPTTestTimer {
public:
    QPTTestTimer();
    ~QPTTestTimer();
    QPTTestTimer(QPTTestTimer const&) = delete;
    QPTTestTimer& operator=(QPTTestTimer const&) = delete;

    /// The start in ticks of clock().
    long getCpuStartTime() const { return m_cpuStartTime; }
    void setCpuStartTime(long ticks) { m_cpuStartTime = ticks; }
    /// The start in seconds as time() counts them.
    long getElapsedStartTime() const { return m_elapsedStartTime; }
    void setElapsedStartTime(long seconds) { m_elapsedStartTime = seconds; }

private:
    long m_cpuStartTime;
    long m_elapsedStartTime;
};

#endif
