#ifndef MO_DIFF_HARNESS_LOG_H
#define MO_DIFF_HARNESS_LOG_H

#include "MoDiffPairResult.h"
#include "MoDiffQptLog.h"
#include "QPTTestHarness.h"

#include <string>

/// Records a run as a script of the test harness: a test per report, a check per master. Names are escaped before the
/// harness writes them, so that none forges a line.
class MoDiffHarnessLog : public MoDiffQptLog {
public:
    /// Opens the log and starts the script, whose banner also goes to standard output. Raises std::runtime_error when
    /// the log cannot be written.
    MoDiffHarnessLog(std::string const& fileName, eLogLevel level, std::string const& description);
    /// Ends the script unless finish() did.
    ~MoDiffHarnessLog() override;
    MoDiffHarnessLog(MoDiffHarnessLog const&) = delete;
    MoDiffHarnessLog& operator=(MoDiffHarnessLog const&) = delete;

    void startReport(std::string const& report);
    void endReport();
    /// Records a result as a check or, when there was no verdict, as an error.
    void record(MoDiffPairResult const& result);
    /// Makes the current test fail for a reason that is no check.
    void recordError(std::string const& text);
    /// Writes the summary table and ends the script.
    /// @param toConsole whether standard output gets the table, too
    /// @return false when something could not be written to the log
    bool finish(bool toConsole);

    void logCheck(char const* description, bool passed) override;
    QPTTestHarness* getHarness() override { return m_harness; }

private:
    void startScript(std::string const& description);

    QPTTestHarness* m_harness; ///< the process's only one, which endScript() destroys; null after that
};

#endif
