#ifndef MO_DIFF_INTERRUPT_H
#define MO_DIFF_INTERRUPT_H

#include <array>
#include <atomic>
#include <csignal>

/// Notes, as long as it lives, which signal asks the program to end: SIGINT, SIGTERM or SIGHUP. One that was ignored
/// when the program was started (nohup, a job in the background) stays so. One object at a time.
class MoDiffInterrupt {
public:
    MoDiffInterrupt();
    ~MoDiffInterrupt();
    MoDiffInterrupt(MoDiffInterrupt const&) = delete;
    MoDiffInterrupt& operator=(MoDiffInterrupt const&) = delete;

    /// The number of the first signal that came; 0 as long as none did.
    static std::atomic<int> const& getSignal();

private:
    static std::array<int, 3> const kSignals;
    std::array<struct sigaction, 3> m_before;
};

#endif
