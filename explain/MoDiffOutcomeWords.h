#ifndef MO_DIFF_OUTCOME_WORDS_H
#define MO_DIFF_OUTCOME_WORDS_H

#include "MoDiffPairResult.h"
#include "MoDiffTotals.h"

#include <array>
#include <string>

/// Outcomes as pages show them.
namespace MoDiffOutcomeWords {

/// Worst first.
extern std::array<MoDiffOutcome, kMoDiffOutcomes> const kOrder;

/// The outcome's word in its colour.
std::string badge(MoDiffOutcome outcome);

/// A bar that shows the shares of outcomes by their colours.
std::string bar(MoDiffTotals const& totals);

} // namespace MoDiffOutcomeWords

#endif
