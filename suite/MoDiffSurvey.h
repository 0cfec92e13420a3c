#ifndef MO_DIFF_SURVEY_H
#define MO_DIFF_SURVEY_H

#include "MoDiffFolderSearch.h"
#include "MoDiffPlan.h"
#include "MoDiffSuiteConfiguration.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

/// What lies in a tree of masters and output, before anybody has written a configuration for it.
struct MoDiffSurvey {
    /// The masters of one format.
    struct Format {
        MoDiffFormatRow const* row;
        std::size_t masters = 0;
        std::size_t actuals = 0; ///< how many of them have their actual file
    };

    MoDiffSuiteConfiguration configuration;        ///< with the tables that were found
    MoDiffPlan plan;                               ///< what a run with it would compare, new files included
    std::vector<Format> formats;                   ///< those with masters, in the order of MoDiffFormatTable
    std::vector<MoDiffFolderSearch::Table> tables; ///< of charts and properties
    std::set<std::string> subDirectories;          ///< that hold masters; "" for "Masters" itself
    std::set<std::string> roots;                   ///< first steps of the masters' paths
    std::map<std::string, std::size_t> idle;       ///< directories with files that no format reads, and how many
    std::set<std::string> nearlyMasters;           ///< directories whose names look like "Masters"

    /// Looks at the tree below the current directory, which must be the working directory. Raises
    /// MoDiffConfigurationError when what the configuration asks for isn't there.
    /// @param configuration the defaults and what options say; its formats, if any, are those that are wanted
    static MoDiffSurvey make(MoDiffSuiteConfiguration const& configuration, MoDiffPlan::Progress const& progress);
};

#endif
