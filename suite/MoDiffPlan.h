#ifndef MO_DIFF_PLAN_H
#define MO_DIFF_PLAN_H

#include "MoDiffFormatTable.h"
#include "MoDiffSuiteConfiguration.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
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
    bool isRegular = false;            ///< whether the search has seen that the master is a regular file
};

/// What one run compares. Pairs point into the setups, so a plan is moved, never copied.
struct MoDiffPlan {
    /// Told while the tree is searched, once for each directory. What it raises ends the search.
    using Progress = std::function<void(std::size_t directories, std::size_t masters)>;

    std::deque<MoDiffEngineSetup> setups;
    std::vector<MoDiffPair> pairs;     ///< in the byte order of their ids, all that were found
    std::vector<std::size_t> selected; ///< indexes into pairs, ascending: what this run compares
    std::vector<std::string>
        newFiles;           ///< actual files that no pair claims, from the working directory, in byte order
    std::string digest;     ///< of all ids and of the settings that decide verdicts: the same for all shards of a run
    std::size_t chosen = 0; ///< how many pairs all shards of the run compare together
    std::string chosenDigest;            ///< of their ids
    std::vector<std::string> unreadable; ///< directories in which masters may lie, sentences with the reason
    std::vector<std::string> searched; ///< directories in which masters were looked for, "" for the working directory
    std::vector<std::string> outputs;  ///< directories in which new files were looked for, there or not
    bool isWhole = true;               ///< holds all that the configuration's rules may be for
    std::size_t masterFolders = 0;     ///< how many folders "Masters" were found; 0 tells a wrong working directory

    MoDiffPlan() = default;
    MoDiffPlan(MoDiffPlan&&) = default;
    MoDiffPlan& operator=(MoDiffPlan&&) = default;
    MoDiffPlan(MoDiffPlan const&) = delete;
    MoDiffPlan& operator=(MoDiffPlan const&) = delete;
    ~MoDiffPlan() = default;

    /// Finds all pairs below the current directory, which must be the working directory, and selects them all; new
    /// files are not looked for, see MoDiffNewFiles. Raises MoDiffConfigurationError for a root that is no directory,
    /// for two tables that claim one master and for rules that meet nothing.
    static MoDiffPlan make(MoDiffSuiteConfiguration const& configuration, Progress const& progress = {});

    /// Sorts the pairs, warns of masters that share their actual file, selects all pairs and makes the digest. For
    /// plans whose pairs were found in another way.
    void complete(MoDiffSuiteConfiguration const& configuration);

    /// Warns of masters that share their actual file: the output directories are flat, so reports of one name in
    /// different folders write over each other's output.
    void warnOfSharedActuals();

    /// The digest of some ids, given in byte order.
    static std::string digestOf(std::vector<std::string_view> const& ids);

    /// The id of a pair.
    static std::string idOf(MoDiffFormatRow const& format, std::string const& master);
};

#endif
