#ifndef MO_DIFF_SELECTION_H
#define MO_DIFF_SELECTION_H

#include "MoDiffPlan.h"

#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

/// A selection that cannot be made; the text tells why.
class MoDiffSelectionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Chooses what one run compares among the pairs of a plan.
namespace MoDiffSelection {

struct Choice {
    std::vector<std::string> filters;         ///< parts of ids, or globs that meet whole ids; empty for all
    std::vector<std::string> formats;         ///< words; empty for all
    std::optional<std::set<std::string>> ids; ///< of the pairs that failed in a record; none for all
    unsigned shardIndex = 1;                  ///< from 1 to shardCount
    unsigned shardCount = 1;
    std::unordered_map<std::string, double> timings; ///< seconds by id, which balance the shards; may be empty

    /// Whether some pairs are left out for another reason than that another shard has them.
    bool isFiltered() const { return !filters.empty() || !formats.empty() || ids.has_value(); }
};

/// Selects the pairs that meet one filter, one format and the ids; of these, those of the shard. The plan is told
/// what all shards have together. All shards of the same plan, choice and timings agree without talking: each pair is
/// in exactly one. Raises MoDiffSelectionError for an unknown format, a filter that meets no pair and a shard that
/// isn't there.
/// @return the ids that no pair of the plan has any more
std::vector<std::string> apply(Choice const& choice, MoDiffPlan& plan);

} // namespace MoDiffSelection

#endif
