#include "MoDiffVerification.h"

#include "KLTFmDir.h"
#include "MoDiffConsole.h"
#include "MoDiffEngineRegistry.h"
#include "MoDiffFanOut.h"
#include "MoDiffHarnessLog.h"
#include "MoDiffNormalizedFiles.h"
#include "MoDiffSummary.h"
#include "MoDiffTrouble.h"

#include <iostream>
#include <optional>

namespace {

unsigned short const kDirectory = 0x4000;

/// One run over all reports.
class Run {
public:
    explicit Run(MoDiffVerificationOptions const& options)
        : m_options(options), m_console(std::cout, MoDiffConsole::isColourful()), m_normalized(m_trouble) {}

    MoDiffExitStatus perform();

private:
    bool isReady() { return checkOptions() && checkTool() && openLogs(); }
    bool checkOptions();
    bool checkTool();
    bool openLogs();
    void verifyAll();
    void verify(std::string const& report);
    void closeLogs();
    void showOutcome();
    MoDiffExitStatus status() const;

    MoDiffVerificationOptions const& m_options;
    MoDiffFormatRow const* m_row = nullptr;
    MoDiffTrouble m_trouble;
    unsigned long m_reportsInTrouble = 0;
    MoDiffConsole m_console;
    MoDiffNormalizedFiles m_normalized;
    std::optional<MoDiffSummary> m_summary;
    std::optional<MoDiffHarnessLog> m_harnessLog;
    MoDiffFanOut m_listeners;
    std::unique_ptr<MoDiffFileEngine> m_engine;
    MoDiffEngineRegistry m_registry;
};

MoDiffExitStatus Run::perform() {
    if (isReady())
        verifyAll();
    closeLogs();
    if (m_engine)
        showOutcome();
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

bool Run::openLogs() {
    m_listeners.add(m_console);
    try {
        if (!m_options.summaryFile.empty())
            m_listeners.add(m_summary.emplace(m_options.summaryFile).getListener());
        if (m_options.normalized)
            m_listeners.add(m_normalized);
        if (!m_options.logFile.empty())
            m_listeners.add(m_harnessLog.emplace(m_options.logFile, m_options.logLevel,
                                                 "modiff verify --format " + m_options.format));
    } catch (std::exception const& error) {
        m_trouble.report(error.what());
    }
    return m_trouble.getCount() == 0;
}

void Run::verifyAll() {
    m_engine = m_row->makeEngine(m_options.engine);
    m_registry.registerDiffEngine(m_row->format, m_engine.get());
    m_registry.addListener(&m_listeners);
    if (!m_options.quiet) // no place needs to be found that nobody sees
        m_console.setComparison(m_row->comparison);
    if (m_row->tool)
        std::cout << std::unitbuf; // what the scripts print and what stands here come in the right order
    for (std::string const& report : m_options.reports) {
        if (m_harnessLog)
            m_harnessLog->startReport(report);
        try {
            verify(report);
        } catch (std::exception const& error) { // the other reports count, too
            ++m_reportsInTrouble;
            m_trouble.report("the report " + report + " was not verified to its end", error);
            if (m_harnessLog)
                m_harnessLog->recordError(error.what());
        }
        if (m_harnessLog)
            m_harnessLog->endReport();
    }
}

void Run::verify(std::string const& report) {
    if (m_engine->getReportName(report).empty())
        throw std::invalid_argument("the path names no report");
    unsigned long const before = m_console.getCompared();
    m_registry.verifyOutput(m_row->format, report.c_str());
    if (m_console.getCompared() > before)
        return;
    m_console.showWithoutMaster(report, m_engine->getMasterFileGlobExpression(report));
    if (m_harnessLog)
        m_harnessLog->recordError("nothing compared: no master was found");
}

void Run::closeLogs() {
    try {
        if (m_summary)
            m_summary->close();
    } catch (std::exception const& error) {
        m_trouble.report("the summary is not complete", error);
    }
    if (m_harnessLog && !m_harnessLog->finish(/*toConsole=*/!m_options.quiet))
        m_trouble.report("the log " + m_options.logFile + " is not complete");
}

void Run::showOutcome() {
    std::string const directory = m_engine->getOutputDirectory();
    if (m_console.getMissing() > 0 && !KLTFmDir::exists(directory.c_str(), kDirectory))
        std::cout << "There is no directory " << MoDiffShownText::escaped(directory)
                  << " as seen from the working directory.\n";
    m_console.showCounts(m_reportsInTrouble);
}

MoDiffExitStatus Run::status() const {
    if (m_trouble.getCount() > 0)
        return eExitTrouble;
    if (m_console.getFailed() > 0)
        return eExitDifferent;
    return m_console.getWithoutMaster() > 0 ? eExitNothingCompared : eExitPassed;
}

} // namespace

MoDiffExitStatus MoDiffVerification::run(MoDiffVerificationOptions const& options) {
    return Run(options).perform();
}
