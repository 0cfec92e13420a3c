#ifndef MO_DIFF_VERIFICATION_CONSOLE_H
#define MO_DIFF_VERIFICATION_CONSOLE_H

#include "MoDiffConsole.h"
#include "MoDiffReportPlan.h"
#include "MoDiffTotals.h"

#include <iosfwd>
#include <string>

class MoDiffTrouble;

/// Shows what `modiff verify` finds and counts it.
class MoDiffVerificationConsole {
public:
    /// @param out     kept, as trouble is; must outlive this object
    /// @param isQuiet whether nobody sees `out`, so that pairs without a verdict are told as trouble
    MoDiffVerificationConsole(std::ostream& out, MoDiffTrouble& trouble, bool isQuiet);

    void show(MoDiffPairResult const& result);
    /// Shows why a report's masters cannot be looked for or that there are none.
    /// @return the reason; "" when the report can be verified
    std::string showReport(MoDiffReportPlan::Report const& report);
    /// Shows the closing line.
    void showCounts();

    std::size_t getCount(MoDiffOutcome outcome) const { return m_totals.getCount(outcome); }
    /// See MoDiffExitStatus.
    int getStatus() const;

private:
    std::ostream& m_out;
    MoDiffTrouble& m_trouble;
    bool m_isQuiet;
    MoDiffConsole m_console;
    MoDiffTotals m_totals;
    std::size_t m_warnings = 0;
    std::size_t m_reportsWithoutMaster = 0;
    std::size_t m_reportsInTrouble = 0;
};

#endif
