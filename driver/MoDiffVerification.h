#ifndef MO_DIFF_VERIFICATION_H
#define MO_DIFF_VERIFICATION_H

#include "MoDiffExitStatus.h"
#include "MoDiffFormatTable.h"
#include "QPTTestHarness.h"

#include <string>
#include <vector>

/// What `modiff verify` is asked to do.
struct MoDiffVerificationOptions {
    std::string format;
    MoDiffEngineSettings engine;
    std::string summaryFile; ///< empty for none
    std::string logFile;     ///< empty for none
    eLogLevel logLevel = eLogNormal;
    bool normalized = false;
    bool quiet = false;
    std::vector<std::string> reports;
};

namespace MoDiffVerification {

/// Verifies the reports and says how it went. Trouble with one of them does not keep the others from being verified.
MoDiffExitStatus run(MoDiffVerificationOptions const& options);

} // namespace MoDiffVerification

#endif
