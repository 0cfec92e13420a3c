#ifndef MO_DIFF_NEW_FILES_H
#define MO_DIFF_NEW_FILES_H

#include "MoDiffPlan.h"
#include "MoDiffSuiteConfiguration.h"

#include <string>
#include <vector>

/// Actual files without a master.
namespace MoDiffNewFiles {

/// Gives a plan its new files: those with the formats' extensions in the output directories that no pair of the plan
/// claims, whether selected or not; in byte order, each once. Below an output directory all sub-directories are
/// searched, or those that the configuration names. A directory that isn't there holds none; one that cannot be read
/// is added to the plan's.
void find(MoDiffSuiteConfiguration const& configuration, MoDiffPlan& plan);

} // namespace MoDiffNewFiles

#endif
