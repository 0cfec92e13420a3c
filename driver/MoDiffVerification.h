#ifndef MO_DIFF_VERIFICATION_H
#define MO_DIFF_VERIFICATION_H

#include "MoDiffExitStatus.h"
#include "MoDiffFormatTable.h"
#include "QPTTestHarness.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

/// What `modiff verify` is asked to do.
struct MoDiffVerificationOptions {
    std::string format;
    MoDiffEngineSettings engine;
    std::string summaryFile; ///< empty for none
    std::string reportsFile; ///< that reports were read from; empty for none
    std::string logFile;     ///< empty for none
    eLogLevel logLevel = eLogNormal;
    bool normalized = false;
    bool quiet = false;
    unsigned jobs = 1;
    std::optional<std::chrono::seconds> maxAge;
    std::vector<std::string> reports;
};

namespace MoDiffVerification {

/// Verifies the reports and says how it went. Trouble with one of them does not keep the others from being verified.
/// @return a MoDiffExitStatus, or 128 and the number of the signal that ended the run
int run(MoDiffVerificationOptions const& options);

} // namespace MoDiffVerification

#endif
