#ifndef MO_DIFF_PLAN_H
#define MO_DIFF_PLAN_H

#include "MoDiffFormatTable.h"

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

/// An engine as pairs need it. Engines themselves are made where pairs are compared, since they are not shared
/// between processes.
struct MoDiffEngineSetup {
    MoDiffFormatRow const* format;
    MoDiffEngineSettings settings; ///< must stay where it is as long as an engine made from it
};

/// A master and the actual file that its engine gives it.
struct MoDiffPair {
    /// The format's word, a colon and the master's path from the working directory, "./" dropped. Unique in a plan.
    std::string id;
    MoDiffEngineSetup const* setup;
    std::string master;                ///< from the working directory, as the engine gets it
    std::string actual;                ///< likewise
    std::vector<std::string> warnings; ///< what is known of it before it is compared
};

/// What one run compares.
struct MoDiffPlan {
    std::deque<MoDiffEngineSetup> setups;
    std::vector<MoDiffPair> pairs;     ///< in the byte order of their ids, all that were found
    std::vector<std::size_t> selected; ///< indexes into pairs, ascending: what this run compares
    std::vector<std::string>
        newFiles;       ///< actual files that no pair claims, from the working directory, in byte order
    std::string digest; ///< of all ids and of the settings that decide verdicts: the same for all shards of a run
};

#endif
