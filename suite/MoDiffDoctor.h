#ifndef MO_DIFF_DOCTOR_H
#define MO_DIFF_DOCTOR_H

#include "MoDiffSuiteConfiguration.h"

#include <string>
#include <vector>

/// Something that the doctor looked at.
struct MoDiffFinding {
    enum Severity {
        eFine,   ///< as it ought to be; without remedy
        eAdvice, ///< may be meant so
        eTrouble ///< verdicts would be wrong or missing
    };

    Severity severity;
    std::string area; ///< "tools", "system" or "tree"
    std::string text; ///< one sentence; holds names as they are, unescaped
    std::string remedy;
};

/// Looks for whatever could spoil a run.
namespace MoDiffDoctor {

/// Examines machine and tree as a run with this configuration would meet them; the current directory must be the
/// working directory. Writes nothing.
/// @param outDirectory where a run would write; need not exist
std::vector<MoDiffFinding> examine(MoDiffSuiteConfiguration const& configuration, std::string const& outDirectory);

} // namespace MoDiffDoctor

#endif
