#include "MoDiffVerificationConsole.h"

#include "MoDiffExitStatus.h"
#include "MoDiffTrouble.h"

#include <ostream>

namespace {

std::string counted(std::size_t count, char const* one, char const* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

} // namespace

MoDiffVerificationConsole::MoDiffVerificationConsole(std::ostream& out, MoDiffTrouble& trouble, bool isQuiet)
    : m_out(out), m_trouble(trouble), m_isQuiet(isQuiet),
      m_console(out, MoDiffConsole::eByFiles, MoDiffConsole::isColourful()) {
}

void MoDiffVerificationConsole::show(MoDiffPairResult const& result) {
    m_totals.add(result.outcome);
    m_warnings += result.warnings.size();
    m_console.show(result);
    m_console.showWarnings(result);
    bool const hasVerdict = result.outcome == MoDiffOutcome::ePassed || result.outcome == MoDiffOutcome::eDifferent ||
                            result.outcome == MoDiffOutcome::eMissing;
    if (m_isQuiet && !hasVerdict)
        m_trouble.report(std::string(wordOf(result.outcome)) + ": " + result.master + ": " + result.detail);
}

std::string MoDiffVerificationConsole::showReport(MoDiffReportPlan::Report const& report) {
    if (!report.trouble.empty()) {
        ++m_reportsInTrouble;
        m_trouble.report("the report " + report.name + " was not verified: " + report.trouble);
        return report.trouble;
    }
    if (report.pairs.empty()) {
        ++m_reportsWithoutMaster;
        m_console.showNote(MoDiffConsole::eYellow, "no master", report.name,
                           "nothing compared: no file is named " + report.glob);
        return "nothing compared: no master was found";
    }
    if (report.isOnlyLonger) {
        ++m_warnings;
        m_console.showNote(MoDiffConsole::eYellow, "warning", report.name,
                           "has no master of its own name, only such with longer names");
    }
    return "";
}

void MoDiffVerificationConsole::showCounts() {
    std::size_t const passed = getCount(MoDiffOutcome::ePassed);
    std::size_t const different = getCount(MoDiffOutcome::eDifferent);
    std::size_t const missing = getCount(MoDiffOutcome::eMissing);
    std::size_t const compared = passed + different + missing;
    m_out << counted(compared, "master", "masters") << " compared: " << passed << " passed, " << different
          << " different, " << missing << " missing";
    if (m_reportsWithoutMaster)
        m_out << "; " << counted(m_reportsWithoutMaster, "report", "reports") << " without a master";
    if (m_totals.getAll() > compared)
        m_out << "; trouble with " << counted(m_totals.getAll() - compared, "master", "masters");
    if (m_reportsInTrouble)
        m_out << "; trouble with " << counted(m_reportsInTrouble, "report", "reports");
    if (m_warnings)
        m_out << "; " << counted(m_warnings, "warning", "warnings");
    m_out << '\n';
}

int MoDiffVerificationConsole::getStatus() const {
    int const status = m_totals.getAll() == 0 ? eExitPassed : m_totals.getExitStatus(/*newFails=*/false);
    return status == eExitPassed && m_reportsWithoutMaster > 0 ? eExitNothingCompared : status;
}
