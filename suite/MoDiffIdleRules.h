#ifndef MO_DIFF_IDLE_RULES_H
#define MO_DIFF_IDLE_RULES_H

#include "MoDiffDiscovery.h"
#include "MoDiffPlan.h"

#include <string>
#include <vector>

/// Rules of a configuration that meet nothing: misspelt, or left over.
namespace MoDiffIdleRules {

/// A sentence for each glob of `exclude` and each table of charts or properties that meets nothing, with its place in
/// front and whatever is spelt nearly alike behind. Rules of the file count for whole plans
/// alone.
std::vector<std::string> find(MoDiffDiscovery::Found const& found, MoDiffPlan const& plan);

} // namespace MoDiffIdleRules

#endif
