#ifndef MO_DIFF_DISCOVERY_H
#define MO_DIFF_DISCOVERY_H

#include "MoDiffPlan.h"
#include "MoDiffSuiteConfiguration.h"

#include <stdexcept>
#include <string>
#include <vector>

/// Directories that could not be read, so that masters may have been overlooked; the text names each on a line.
class MoDiffDiscoveryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Finds the masters below the current directory, which must be the working directory.
///
/// Folders named "Masters" are searched for from each root on. Inside such a folder, a directory is either a format's
/// folder, as the formats' engines tell it, or a sub-directory (a language, say), at any depth. Every real directory
/// outside of them is searched once, however roots overlap and links lead there: under its own path rather than that
/// of a link. Inside them the path decides which actual file belongs to a master, so links are followed there, but
/// for a directory that holds itself.
namespace MoDiffDiscovery {

struct Found {
    std::vector<MoDiffConfigurationError> badRoots;
    std::vector<std::string> unreadable; ///< directories with the reason, one sentence each
    std::vector<std::string> masterFolders;
    std::vector<std::string> emptyRoots; ///< roots without a master
    /// Files below a folder "Masters" that no format's engine reads there, whatever the configuration selects.
    std::vector<std::string> unclaimed;
    std::vector<std::string> directories; ///< all below folders "Masters"
};

/// Appends setups and pairs to a plan; what stands in the way of complete ones is told in the result.
Found find(MoDiffSuiteConfiguration const& configuration, MoDiffPlan& plan, MoDiffPlan::Progress const& progress);

} // namespace MoDiffDiscovery

#endif
