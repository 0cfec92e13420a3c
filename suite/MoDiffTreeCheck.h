#ifndef MO_DIFF_TREE_CHECK_H
#define MO_DIFF_TREE_CHECK_H

#include "MoDiffFinding.h"
#include "MoDiffSuiteConfiguration.h"

#include <vector>

/// The doctor's look at masters and output directories.
namespace MoDiffTreeCheck {

std::vector<MoDiffFinding> examine(MoDiffSuiteConfiguration const& configuration);

} // namespace MoDiffTreeCheck

#endif
