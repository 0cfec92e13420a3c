#include "MoDiffVerification.h"

#include "KLTFmDir.h"
#include "MoDiffGuardedFiles.h"
#include "MoDiffHarnessLog.h"
#include "MoDiffInterrupt.h"
#include "MoDiffNormalizedFiles.h"
#include "MoDiffRun.h"
#include "MoDiffShownText.h"
#include "MoDiffSummaryFile.h"
#include "MoDiffTrouble.h"
#include "MoDiffVerificationConsole.h"
#include "MoDiffWholeFile.h"

#include <functional>
#include <iostream>
#include <optional>

namespace {

unsigned short const kDirectory = 0x4000;

/// One run over all reports. Results are shown and recorded in the order of the reports, in whatever order they come.
class Run : public MoDiffRunEvents {
public:
    explicit Run(MoDiffVerificationOptions const& options)
        : m_options(options), m_console(std::cout, m_trouble, options.quiet), m_normalized(m_files) {}

    int perform();

    void finished(MoDiffPairResult const& result) override;

private:
    bool isReady() { return checkOptions() && checkTool() && plan() && openOutputs(); }
    bool checkOptions();
    bool checkTool();
    bool plan();
    bool openOutputs();
    void guardFiles();
    void compare();
    void advance();
    void startReport(MoDiffReportPlan::Report const& report);
    void record(MoDiffPairResult const& result);
    void tellAll(std::function<void(MoDiffSummaryFile::Entry const&)> const& tell) const;
    void closeOutputs();
    void showOutcome();
    int status() const;

    MoDiffVerificationOptions const& m_options;
    MoDiffFormatRow const* m_row = nullptr;
    MoDiffTrouble m_trouble;
    MoDiffVerificationConsole m_console;
    MoDiffGuardedFiles m_files;
    MoDiffNormalizedFiles m_normalized;
    std::optional<MoDiffReportPlan> m_plan;
    std::optional<MoDiffHarnessLog> m_harnessLog;
    std::vector<std::optional<MoDiffPairResult>> m_results; ///< by the index of the pair
    std::size_t m_report = 0;                               ///< that is being recorded
    std::size_t m_pair = 0;                                 ///< of the report
    bool m_isStarted = false;                               ///< whether its test was
    int m_signal = 0;
};

int Run::perform() {
    if (isReady()) {
        compare();
        closeOutputs();
        showOutcome();
    }
    if (!std::cout.flush())
        m_trouble.report("cannot write standard output");
    return status();
}

bool Run::checkOptions() {
    m_row = MoDiffFormatTable::find(m_options.format);
    MoDiffEngineSettings const& engine = m_options.engine;
    if (!m_row)
        m_trouble.report("there is no format " + m_options.format + "; choose one of " + MoDiffFormatTable::words());
    else if (m_row->takesDirectories && engine.typeName.empty())
        m_trouble.report("the format " + m_options.format + " needs --type-name, the name of its output directory");
    else if (!m_row->takesDirectories && !(engine.typeName + engine.masterSubDirectory).empty())
        m_trouble.report("--type-name and --master-sub-directory are for the formats tvd and prp");
    else if (!m_row->takesSuffix && !engine.masterSuffix.empty())
        m_trouble.report("--master-suffix is for the format tvd");
    return m_trouble.getCount() == 0;
}

bool Run::checkTool() {
    if (m_row->tool)
        for (std::string const& missing : MoDiffToolCheck::findMissing(*m_row->tool))
            m_trouble.report(missing);
    return m_trouble.getCount() == 0;
}

bool Run::plan() {
    m_plan.emplace(*m_row, m_options.engine, m_options.reports);
    m_results.resize(m_plan->getPlan().pairs.size());
    return true;
}

bool Run::openOutputs() {
    try {
        guardFiles();
        if (!m_options.summaryFile.empty())
            MoDiffWholeFile::prepare(m_options.summaryFile);
        if (!m_options.logFile.empty())
            m_harnessLog.emplace(m_options.logFile, m_options.logLevel, "modiff verify --format " + m_options.format);
    } catch (std::exception const& error) {
        m_trouble.report(error.what());
    }
    return m_trouble.getCount() == 0;
}

void Run::guardFiles() {
    if (m_options.summaryFile.empty() && m_options.logFile.empty() && !m_options.normalized)
        return;
    for (MoDiffPair const& pair : m_plan->getPlan().pairs) {
        m_files.protect(pair.master, "a master");
        m_files.protect(pair.actual, "an actual file");
    }
    if (!m_options.reportsFile.empty())
        m_files.protect(m_options.reportsFile, "the list of reports");
    m_files.protectScripts();
    if (!m_options.summaryFile.empty())
        m_files.claim(m_options.summaryFile, "the summary");
    if (!m_options.logFile.empty())
        m_files.claim(m_options.logFile, "the log");
}

void Run::compare() {
    MoDiffSuiteConfiguration configuration;
    configuration.jobs = m_options.jobs;
    configuration.timeLimit = configuration.timeLimit.zero();
    configuration.memoryLimit = 0;
    configuration.maxAge = m_options.maxAge;
    configuration.hiddenWarning = 100; // asked of whole runs only
    MoDiffRunOptions options;
    options.signal = &MoDiffInterrupt::getSignal();
    options.inWorker = m_options.normalized ? &m_normalized : nullptr;
    MoDiffInterrupt const interrupt;
    try {
        advance(); // to the first report with a master
        std::cout.flush();
        m_signal = MoDiffRun::perform(m_plan->getPlan(), configuration, options, *this).signal;
    } catch (std::exception const& error) {
        m_trouble.report("cannot go on", error);
    }
    if (m_signal)
        m_trouble.report("ended by a signal; not all reports were verified");
}

void Run::finished(MoDiffPairResult const& result) {
    m_results[m_plan->indexOf(result.id)] = result;
    advance();
}

/// INVARIANT: everything before the pair m_pair of the report m_report is recorded.
void Run::advance() {
    for (auto const& reports = m_plan->getReports(); m_report < reports.size(); ++m_report) {
        MoDiffReportPlan::Report const& report = reports[m_report];
        if (!m_isStarted)
            startReport(report);
        for (; m_pair < report.pairs.size(); ++m_pair) {
            auto const& result = m_results[report.pairs[m_pair]];
            if (!result)
                return;
            record(*result);
        }
        if (m_harnessLog)
            m_harnessLog->endReport();
        m_pair = 0;
        m_isStarted = false;
    }
}

void Run::startReport(MoDiffReportPlan::Report const& report) {
    m_isStarted = true;
    if (m_harnessLog)
        m_harnessLog->startReport(report.name);
    std::string const problem = m_console.showReport(report);
    if (m_harnessLog && !problem.empty())
        m_harnessLog->recordError(problem);
}

void Run::record(MoDiffPairResult const& result) {
    m_console.show(result);
    if (m_harnessLog)
        m_harnessLog->record(result);
}

void Run::tellAll(std::function<void(MoDiffSummaryFile::Entry const&)> const& tell) const {
    for (MoDiffReportPlan::Report const& report : m_plan->getReports())
        for (std::size_t const index : report.pairs)
            if (auto const& result = m_results[index])
                tell({result->master, result->actual, result->outcome});
}

void Run::closeOutputs() {
    try {
        if (!m_options.summaryFile.empty())
            MoDiffSummaryFile::write(m_options.summaryFile, [this](auto const& tell) { tellAll(tell); });
    } catch (std::exception const& error) {
        m_trouble.report("the summary is not complete", error);
    }
    if (m_harnessLog && !m_harnessLog->finish(/*toConsole=*/!m_options.quiet))
        m_trouble.report("the log " + m_options.logFile + " is not complete");
}

void Run::showOutcome() {
    std::string const& directory = m_plan->getOutputDirectory();
    if (m_console.getCount(MoDiffOutcome::eMissing) > 0 && !KLTFmDir::exists(directory.c_str(), kDirectory))
        std::cout << "There is no directory " << MoDiffShownText::escaped(directory)
                  << " as seen from the working directory.\n";
    m_console.showCounts();
}

int Run::status() const {
    if (m_signal)
        return 128 + m_signal;
    if (m_trouble.getCount() > 0)
        return eExitTrouble;
    return m_console.getStatus();
}

} // namespace

int MoDiffVerification::run(MoDiffVerificationOptions const& options) {
    return Run(options).perform();
}
