#ifndef MO_DIFF_DISCOVERY_H
#define MO_DIFF_DISCOVERY_H

#include "MoDiffMasterPlace.h"
#include "MoDiffPlan.h"
#include "MoDiffSuiteConfiguration.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

/// Finds the masters below the current directory, which must be the working directory.
///
/// Folders named "Masters" are searched for from each root on. Inside such a folder, a directory is either a format's
/// folder, as the formats' engines tell it, or a sub-directory (a language, say), at any depth. Every real directory
/// outside of them is searched once, however roots overlap and links lead there: under its own path rather than that
/// of a link. Inside them the path decides which actual file belongs to a master, so links are followed there, but
/// for a directory that holds itself.
namespace MoDiffDiscovery {

/// The name of a folder of masters.
inline constexpr char kMasters[] = "Masters";

/// What was found beside pairs.
struct Found {
    std::size_t masterFolders = 0;             ///< folders "Masters"
    std::set<std::string> badRoots;            ///< roots that cannot be read, sentences with the system's reason
    std::set<std::string> unreadable;          ///< other directories, likewise
    std::set<std::string> subDirectories;      ///< directories below "Masters" that are no format's folder
    std::set<std::string> nearlyMasters;       ///< directories whose names look like "Masters"
    std::map<std::string, std::size_t> idle;   ///< directories there with files that no format reads, and how many
    std::vector<MoDiffExclude> idleExcludes;   ///< that leave nothing out which another one has left
    std::vector<MoDiffMasterPlace> idleTables; ///< of selected charts or properties, without a master
};

/// The part of a path that ends with its first step "Masters"; "" when it has none.
std::string mastersFolderOf(std::string const& path);

/// Appends setups and pairs to a plan, whose pairs come into the byte order of their ids. Raises
/// MoDiffConfigurationError when two tables of the configuration claim one master.
/// @param progress may be empty
Found find(MoDiffSuiteConfiguration const& configuration, MoDiffPlan& plan, MoDiffPlan::Progress const& progress);

} // namespace MoDiffDiscovery

#endif
