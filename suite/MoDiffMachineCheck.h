#ifndef MO_DIFF_MACHINE_CHECK_H
#define MO_DIFF_MACHINE_CHECK_H

#include "MoDiffFinding.h"
#include "MoDiffSuiteConfiguration.h"

#include <string>
#include <vector>

/// The doctor's look at what a run needs of the machine: scripts and their interpreter, ICU, locale, limits, disk.
namespace MoDiffMachineCheck {

std::vector<MoDiffFinding> examine(MoDiffSuiteConfiguration const& configuration, std::string const& outDirectory);

} // namespace MoDiffMachineCheck

#endif
