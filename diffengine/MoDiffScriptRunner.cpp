#include "MoDiffScriptRunner.h"

#include <atomic>

namespace {

std::atomic<MoDiffScriptRunner*> installed{nullptr};

} // namespace

MoDiffScriptRunner::~MoDiffScriptRunner() = default;

MoDiffScriptRunner* MoDiffScriptRunner::set(MoDiffScriptRunner* runner) {
    return installed.exchange(runner);
}

MoDiffScriptRunner* MoDiffScriptRunner::get() {
    return installed.load();
}
