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

/// Makes sure that a summary can be written and removes an old one, so that it is never taken for that of a run that
/// failed. Raises std::exception when it cannot.
void prepare(std::string const& fileName);

/// Puts a summary in the place of the file that has the name, or to which a link of the name leads, when it is
/// complete: what the library's file log writes when it is told the results one after the other. Pairs that passed
/// are passes, all others failures, those without a verdict included. What is no regular file, a pipe, say, is
/// written to. Raises std::exception when that fails; what stood there stays.
/// @param tellAll hands over the entries in their order
void write(std::string const& fileName, std::function<void(std::function<void(Entry const&)> const&)> const& tellAll);

} // namespace MoDiffSummaryFile

#endif
