#ifndef MO_DIFF_RECORD_GROUPS_H
#define MO_DIFF_RECORD_GROUPS_H

#include "MoDiffGroups.h"
#include "MoDiffPairExplanation.h"
#include "MoDiffPairSetups.h"
#include "MoDiffRecordPairs.h"

#include <cstddef>
#include <functional>

/// The pairs of a record that failed, in groups that differ alike. The groups are kept beside the record, in
/// groups.jsonl, so that a group keeps its number as long as the record is the same, whatever becomes of the files.
class MoDiffRecordGroups {
public:
    /// Told before each pair that is explained. What it raises ends the search.
    using Progress = std::function<void(std::size_t done, std::size_t all, std::string const& id)>;

    /// Reads the groups that are kept, or finds and keeps them; a directory that can't be written is no hindrance.
    /// The current directory must be the working directory.
    static MoDiffGroups find(MoDiffRecordPairs const& record, MoDiffPairSetups& setups, Progress const& progress);

    /// Explains a pair that is different. Raises std::exception.
    static MoDiffPairExplanation explain(MoDiffPairResult const& pair, MoDiffPairSetups& setups,
                                         MoDiffPairExplanation::Options const& options);

    /// Whether both files of a pair can be explained: it is different, expected or not.
    static bool isExplained(MoDiffPairResult const& pair);
};

#endif
