#ifndef MO_DIFF_WORKING_DIRECTORY_H
#define MO_DIFF_WORKING_DIRECTORY_H

#include "MoDiffPlan.h"

#include <cstddef>
#include <set>
#include <string>

/// Looks for the directory from which a tree's output is seen, where nobody has said yet which one it is.
struct MoDiffWorkingDirectory {
    std::set<std::string> found;         ///< absolute, without links; several when a tree holds several servers
    std::size_t masterFolders = 0;       ///< folders "Masters" below the current directory, as far as it was searched
    std::set<std::string> unreadable;    ///< directories below it, sentences with the reason
    std::set<std::string> nearlyMasters; ///< directories below it whose names look like "Masters"

    /// The current directory if it sees the output; else those above a folder "Masters" below it, the nearest to each
    /// folder; else the nearest one above it.
    static MoDiffWorkingDirectory find(MoDiffPlan::Progress const& progress);

    /// Where the formats' output directories lie, as seen from the working directory.
    static std::string outputRoot();
    /// Whether a directory sees the output, and is not itself where that lies.
    static bool seesOutput(std::string const& directory);
};

#endif
