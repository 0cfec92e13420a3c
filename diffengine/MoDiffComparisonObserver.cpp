#include "MoDiffComparisonObserver.h"

#include <utility>

namespace {

MoDiffComparisonObserver* g_observer = nullptr;
MoDiffComparisonObserver::File g_master = {};
MoDiffComparisonObserver::File g_actual = {};

} // namespace

MoDiffComparisonObserver::~MoDiffComparisonObserver() = default;

void MoDiffComparisonObserver::textsRead(char const*, std::size_t, char const*, std::size_t) {
}

void MoDiffComparisonObserver::blockRead(Side, char const*, std::size_t) {
}

void MoDiffComparisonObserver::textsCleansed(MoDiffNormalizationPattern const*, std::size_t, std::size_t) {
}

MoDiffComparisonObserver* MoDiffComparisonObserver::set(MoDiffComparisonObserver* observer) {
    return std::exchange(g_observer, observer);
}

MoDiffComparisonObserver* MoDiffComparisonObserver::current() {
    return g_observer;
}

MoDiffComparisonObserver::File const& MoDiffComparisonObserver::file(Side side) {
    return side == eMaster ? g_master : g_actual;
}

void MoDiffComparisonObserver::setFiles(File const& master, File const& actual) {
    g_master = master;
    g_actual = actual;
}
