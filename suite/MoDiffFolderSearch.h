#ifndef MO_DIFF_FOLDER_SEARCH_H
#define MO_DIFF_FOLDER_SEARCH_H

#include "MoDiffDiscovery.h"

#include <string>
#include <vector>

/// Looks for folders of charts and properties, which no format fixes, and makes the tables for them. Which output
/// directory belongs to a folder is told by the names of the files in both.
namespace MoDiffFolderSearch {

/// A table that would read masters.
struct Table {
    MoDiffFormatRow const* format;
    MoDiffConfiguredFolder folder;
    bool isGuess; ///< no output directory holds a file of any master's name
};

/// Searches the directories of masters that no format reads. The current directory is the working directory.
/// @param plan what is found without tables; tells which sub-directories are languages rather than folders
std::vector<Table> find(MoDiffSuiteConfiguration const& configuration, MoDiffPlan const& plan,
                        MoDiffDiscovery::Found const& found);

} // namespace MoDiffFolderSearch

#endif
