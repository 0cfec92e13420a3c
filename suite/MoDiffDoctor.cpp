#include "MoDiffDoctor.h"

#include "MoDiffMachineCheck.h"
#include "MoDiffTreeCheck.h"

std::vector<MoDiffFinding> MoDiffDoctor::examine(MoDiffSuiteConfiguration const& configuration,
                                                 std::string const& outDirectory) {
    std::vector<MoDiffFinding> findings = MoDiffMachineCheck::examine(configuration, outDirectory);
    std::vector<MoDiffFinding> const tree = MoDiffTreeCheck::examine(configuration);
    findings.insert(findings.end(), tree.begin(), tree.end());
    return findings;
}
