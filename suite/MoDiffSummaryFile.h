#ifndef MO_DIFF_SUMMARY_FILE_H
#define MO_DIFF_SUMMARY_FILE_H

#include "MoDiffPairResult.h"

#include <functional>
#include <string>

/// The XML test summary of a run.
namespace MoDiffSummaryFile {

struct Entry {
    std::string const& master;
    std::string const& actual;
    MoDiffOutcome outcome;
};

/// Writes a summary as MoDiffWholeFile does: what the library's file log writes when it is told the results one after
/// the other. Pairs that passed are passes, all others failures, those without a verdict included.
/// @param tellAll hands over the entries in their order
void write(std::string const& fileName, std::function<void(std::function<void(Entry const&)> const&)> const& tellAll);

} // namespace MoDiffSummaryFile

#endif
