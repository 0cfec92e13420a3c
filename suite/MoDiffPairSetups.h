#ifndef MO_DIFF_PAIR_SETUPS_H
#define MO_DIFF_PAIR_SETUPS_H

#include "MoDiffMasterPlace.h"
#include "MoDiffPairResult.h"
#include "MoDiffPlan.h"

#include <deque>
#include <string>
#include <vector>

/// Finds the engines of single pairs without searching a tree, and the places of new masters. Paths are seen from the
/// current directory, which must be the working directory.
class MoDiffPairSetups {
public:
    explicit MoDiffPairSetups(MoDiffSuiteConfiguration const& configuration);

    /// How the engine of a pair is set up; null when no format or table of the configuration gives its master this
    /// actual file. Lives as long as this object.
    MoDiffEngineSetup const* find(MoDiffPairResult const& pair);

    /// The pair of an actual file and the master that it is to become. Raises std::runtime_error that tells why there
    /// is no place for it.
    /// @param under the folder of the report, in which "Masters" lies or comes to lie, or that folder itself
    MoDiffPairResult placeNew(std::string const& actual, std::string const& under) const;

private:
    std::vector<MoDiffMasterPlace> m_places;
    std::deque<MoDiffEngineSetup> m_setups;
};

#endif
