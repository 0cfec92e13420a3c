#include "MoDiffPairResult.h"

#include <algorithm>
#include <iterator>

namespace {

char const* const kWords[kMoDiffOutcomes] = {
    "passed", "different", "missing", "error", "crashed", "timeout", "memory", "expected", "unexpectedly-passed"};

} // namespace

char const* wordOf(MoDiffOutcome outcome) {
    return kWords[static_cast<std::size_t>(outcome)];
}

std::optional<MoDiffOutcome> outcomeOf(std::string const& word) {
    auto const* const found = std::find(std::begin(kWords), std::end(kWords), word);
    if (found == std::end(kWords))
        return std::nullopt;
    return static_cast<MoDiffOutcome>(found - std::begin(kWords));
}

bool isFailure(MoDiffOutcome outcome) {
    return outcome != MoDiffOutcome::ePassed && outcome != MoDiffOutcome::eExpected;
}
