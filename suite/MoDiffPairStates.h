#ifndef MO_DIFF_PAIR_STATES_H
#define MO_DIFF_PAIR_STATES_H

#include "MoDiffFileState.h"
#include "MoDiffPlan.h"

#include <cstddef>
#include <set>
#include <string>
#include <unordered_map>

/// What the system tells of the files of a plan's selected pairs at one time. Nothing is read, so a file counts as
/// changed when it was written again with the same contents, too.
class MoDiffPairStates {
public:
    /// Looks at the files; the current directory must be the working directory.
    explicit MoDiffPairStates(MoDiffPlan const& plan);

    /// The ids of pairs that are new or whose files have changed since an earlier look.
    std::set<std::string> changedSince(MoDiffPairStates const& before) const;
    /// The ids of pairs that an earlier look had and this one has not.
    std::set<std::string> goneSince(MoDiffPairStates const& before) const;

private:
    struct Pair {
        MoDiffFileState master;
        MoDiffFileState actual;
        std::string warnings; ///< that the plan gave it
    };

    std::unordered_map<std::string, Pair> m_pairs; ///< by id
};

#endif
