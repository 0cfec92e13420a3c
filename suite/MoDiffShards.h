#ifndef MO_DIFF_SHARDS_H
#define MO_DIFF_SHARDS_H

#include "MoDiffPlan.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

/// Splits the pairs of a run among machines that don't talk to each other.
namespace MoDiffShards {

/// The part of some pairs that one shard compares. Without timings every count-th pair; with them, the slowest first,
/// each to the shard that has least to do. A pair without timing takes the mean of its format, or of all.
/// @param pairs   indexes into the plan's pairs, ascending, the same for all shards
/// @param index   of the shard, from 1
/// @param timings seconds by id
/// @return indexes in ascending order
std::vector<std::size_t> part(MoDiffPlan const& plan, std::vector<std::size_t> const& pairs, unsigned index,
                              unsigned count, std::unordered_map<std::string, double> const& timings);

} // namespace MoDiffShards

#endif
