#ifndef MO_DIFF_DOCTOR_H
#define MO_DIFF_DOCTOR_H

#include "MoDiffFinding.h"
#include "MoDiffSuiteConfiguration.h"

#include <string>
#include <vector>

/// Looks for whatever could spoil a run.
namespace MoDiffDoctor {

/// Examines machine and tree as a run with this configuration would meet them; the current directory must be the
/// working directory. Writes nothing. Raises nothing for what it finds.
/// @param outDirectory where a run would write; need not exist
std::vector<MoDiffFinding> examine(MoDiffSuiteConfiguration const& configuration, std::string const& outDirectory);

} // namespace MoDiffDoctor

#endif
