#include "MoDiffInterrupt.h"

std::array<int, 3> const MoDiffInterrupt::kSignals = {SIGINT, SIGTERM, SIGHUP};

namespace {

std::atomic<int> firstSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler must not wait for a lock");

void note(int signal) {
    int none = 0;
    firstSignal.compare_exchange_strong(none, signal);
}

} // namespace

MoDiffInterrupt::MoDiffInterrupt() {
    firstSignal = 0;
    struct sigaction noting = {};
    noting.sa_handler = note;
    noting.sa_flags = SA_RESTART;
    for (std::size_t index = 0; index < kSignals.size(); ++index) {
        sigaction(kSignals[index], nullptr, &m_before[index]);
        if (m_before[index].sa_handler != SIG_IGN)
            sigaction(kSignals[index], &noting, nullptr);
    }
}

MoDiffInterrupt::~MoDiffInterrupt() {
    for (std::size_t index = 0; index < kSignals.size(); ++index)
        sigaction(kSignals[index], &m_before[index], nullptr);
}

std::atomic<int> const& MoDiffInterrupt::getSignal() {
    return firstSignal;
}
