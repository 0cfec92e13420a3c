#ifndef MO_DIFF_REPORT_PAGES_H
#define MO_DIFF_REPORT_PAGES_H

#include "MoDiffPageList.h"
#include "MoDiffPairSetups.h"

#include <cstddef>
#include <functional>
#include <string>

/// A record as pages that open from disk: index.html, and pairs/ with a page for each pair that did not pass.
namespace MoDiffReportPages {

/// Told before each page of a pair; the writing ends when it returns false. What it raises ends it, too.
using Progress = std::function<bool(std::size_t done, std::size_t all, std::string const& id)>;

/// Writes the pages, index.html last, and removes those of an older report that are not of this one. The current
/// directory must be the working directory. Uses the library's patterns, so one at a time in a process. Raises
/// std::exception.
/// @param directory absolute; see MoDiffPageDirectory
/// @return false when the progress ended it; the pages that stand there then are whole, older ones among them
bool write(MoDiffPageList const& list, MoDiffPairSetups& setups, std::string const& directory,
           Progress const& progress);

/// Raises std::runtime_error when a directory lies where masters or actual files of the record lie.
void refuseInside(MoDiffRecordPairs const& record, std::string const& directory);

} // namespace MoDiffReportPages

#endif
