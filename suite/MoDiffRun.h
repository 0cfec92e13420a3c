#ifndef MO_DIFF_RUN_H
#define MO_DIFF_RUN_H

#include "MoDiffPlan.h"
#include "MoDiffRecord.h"
#include "MoDiffRunEvents.h"
#include "MoDiffSuiteConfiguration.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

class MoDiffListener;

/// What one run is to do beside the configuration's values.
struct MoDiffRunOptions {
    std::string outDirectory; ///< gets the record and the scripts' results; empty for a run without record
    std::string summaryFile;  ///< gets the XML summary; empty for none
    bool resume = false;      ///< takes up the incomplete record in outDirectory
    /// Makes the run one that keeps a record up to date: of the pairs that the record in outDirectory holds, those
    /// are compared that this tells to be stale, and those that it does not hold. The record is replaced at the end,
    /// as a whole, or stays as it is when the run is stopped. Empty for a run that compares everything.
    std::function<bool(MoDiffPair const&)> isStale;
    std::size_t failFast = 0; ///< stops after so many failures; 0 for never

    /// First line of the record; what the plan tells is filled in by the run.
    MoDiffRecordHeader header;

    /// Gives the reason why a pair is expected to be different or missing; null when it is not. Empty for none.
    std::function<std::string const*(MoDiffPair const&)> expectedReason;

    /// Is told every result in the process that compares, while the texts are at hand; null for none. Its errors turn
    /// the pair into an error.
    MoDiffListener* inWorker = nullptr;

    /// The longest that python or a script may take to start, which is no part of a pair's time limit.
    std::chrono::milliseconds startLimit{120000};

    /// Holds the number of the signal that is to end the run, 0 as long as none came; null for none.
    std::atomic<int> const* signal = nullptr;
};

/// What came of a run.
struct MoDiffRunReport {
    MoDiffTotals totals;    ///< pairs from a record that was taken up included
    std::string recordFile; ///< "" without one
    bool complete = false;  ///< every pair of the plan's selection has an outcome
    int signal = 0;         ///< that ended the run; 0 otherwise
    /// 0 to 3, see MoDiffTotals, or 128 and the signal. A shard leaves new files to the merge; one for which no pair
    /// is left has nothing to complain of.
    int exitStatus = 0;
};

namespace MoDiffRun {

/// Compares the selected pairs of a plan in `configuration.jobs` processes and keeps the record. The working
/// directory is where engines see ../webcontent from; the process must have one thread, since it forks. Raises
/// std::exception when record or summary cannot be written or no process can be started; all processes are ended by
/// then.
/// @param events is told what happens; pairs from a record that was taken up come first
MoDiffRunReport perform(MoDiffPlan const& plan, MoDiffSuiteConfiguration const& configuration,
                        MoDiffRunOptions const& options, MoDiffRunEvents& events);

} // namespace MoDiffRun

#endif
