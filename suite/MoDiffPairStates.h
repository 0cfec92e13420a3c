#ifndef MO_DIFF_PAIR_STATES_H
#define MO_DIFF_PAIR_STATES_H

#include "MoDiffPlan.h"

#include <cstddef>
#include <set>
#include <string>
#include <sys/stat.h>
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
    /// A file that cannot be looked at has the reason, and zeros otherwise.
    struct File {
        explicit File(std::string const& path);
        bool operator==(File const& other) const;

        int error = 0; ///< of the system
        dev_t device = 0;
        ino_t number = 0;
        off_t size = 0;
        timespec modified = {};
        timespec changed = {}; ///< permissions, too
    };
    struct Pair {
        File master;
        File actual;
        std::string warnings; ///< that the plan gave it
    };

    std::unordered_map<std::string, Pair> m_pairs; ///< by id
};

#endif
