#ifndef MO_DIFF_RECORD_MERGE_H
#define MO_DIFF_RECORD_MERGE_H

#include "MoDiffRecord.h"
#include "MoDiffRunEvents.h"

#include <string>
#include <vector>

/// Joins the records of shards into one.
namespace MoDiffRecordMerge {

struct Report {
    MoDiffRecordHeader header; ///< of the joined record
    MoDiffTotals totals;
    std::vector<std::string> newFiles; ///< that every shard tells
    std::string recordFile;
    int exitStatus = 0; ///< as of one run over all pairs
};

/// Writes the joined record, pairs in the byte order of their ids, into a directory that is none of the sources.
/// Raises MoDiffRecordError when the records are not of the same plan and selection, when one is incomplete, missing
/// or there twice, when its counts don't fit its pairs, or when a pair is missing or there twice; then nothing is
/// written.
/// @param events is told every pair, in the order in which they are written
Report merge(std::vector<std::string> const& directories, std::string const& outDirectory, MoDiffRunEvents& events);

} // namespace MoDiffRecordMerge

#endif
