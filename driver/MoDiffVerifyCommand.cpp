#include "MoDiffVerifyCommand.h"

#include "MoDiffConfigurationReader.h"
#include "MoDiffDirectory.h"
#include "MoDiffInput.h"
#include "MoDiffTrouble.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace {

char const kFooter[] = "Each report's masters lie in the folder Masters beside it, the files compared with them in\n"
                       "../webcontent/, seen from the working directory; `modiff formats` shows the places.\n\n"
                       "Exit status: 0 all passed; 1 a difference or a missing file; 2 trouble: a bad option, an\n"
                       "error, a log that cannot be written, a script or module that is missing; 3 a report has\n"
                       "no master, so nothing was compared. 2 counts before 1, 1 before 3.";

std::map<std::string, int> const kLogLevels = {{"none", eLogNone},
                                               {"minimal", eLogMinimal},
                                               {"concise", eLogConcise},
                                               {"normal", eLogNormal},
                                               {"detailed", eLogDetailed}};

/// Sends standard output nowhere, that of the scripts included.
void silenceOutput() {
    int const nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0 || dup2(nowhere, STDOUT_FILENO) < 0)
        throw std::system_error(errno, std::generic_category(), "cannot silence standard output");
    close(nowhere);
}

} // namespace

MoDiffVerifyCommand::MoDiffVerifyCommand(CLI::App& parent)
    : MoDiffCommand(parent, "verify", "Verify reports of one format", kFooter) {
    addReportOptions();
    addOutputOptions();
    addEngineOptions();
}

void MoDiffVerifyCommand::addReportOptions() {
    options()
        .add_option("--format", m_asked.format, "Output format, a word of `modiff formats`")
        ->type_name("WORD")
        ->required();
    CLI::Option* const from = options()
                                  .add_option("--reports-from", m_reportsFrom,
                                              "Read further reports from this file, one a line; - for standard input")
                                  ->type_name("FILE")
                                  ->check(notEmpty());
    options()
        .add_flag("-0,--null", m_areNamesSeparated, "The file of --reports-from ends each name with a NUL")
        ->needs(from);
    options()
        .add_option("ACTUAL", m_asked.reports, "Reports as the server produced them; only their paths count")
        ->type_name("");
}

void MoDiffVerifyCommand::addOutputOptions() {
    options()
        .add_option("--summary", m_asked.summaryFile, "Write an XML test summary to this file")
        ->type_name("FILE")
        ->check(notEmpty());
    options().add_flag("--normalized", m_asked.normalized,
                       "Write the two normalized texts of a difference beside the actual file");
    CLI::Option* const log =
        options()
            .add_option("--log", m_asked.logFile, "Record the run as a test harness script in this file")
            ->type_name("FILE")
            ->check(notEmpty());
    options()
        .add_option("--log-level", m_asked.logLevel,
                    "How much the log tells: none, minimal, concise, normal (default) or detailed")
        ->transform(oneOf(kLogLevels))
        ->type_name("LEVEL")
        ->needs(log);
    options()
        .add_option("--max-age", m_maxAge, "Warn of actual files that are older, such as 1d or 90m")
        ->type_name("TIME")
        ->check(notEmpty());
    options()
        .add_option("-j,--jobs", m_asked.jobs, "How many processes compare at the same time")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(1U, 1024U));
    options().add_flag("--quiet", m_asked.quiet, "Print nothing but trouble; the exit status tells");
}

void MoDiffVerifyCommand::addEngineOptions() {
    MoDiffEngineSettings& engine = m_asked.engine;
    options()
        .add_option("--sub-directory", engine.subDirectory,
                    "Directory below both the masters' and the output directory, a language, say")
        ->type_name("DIR");
    options()
        .add_option("--type-name", engine.typeName, "tvd, prp: name of the output directory (required)")
        ->type_name("NAME");
    options()
        .add_option("--master-sub-directory", engine.masterSubDirectory,
                    "tvd, prp: folder below the masters' directory")
        ->type_name("DIR");
    options()
        .add_option("--master-suffix", engine.masterSuffix,
                    "tvd: what follows \"_\" at the end of the masters' names")
        ->type_name("TEXT");
}

int MoDiffVerifyCommand::run() {
    MoDiffDirectory::current(); // without one, every report would lack its masters
    if (m_asked.quiet)
        silenceOutput();
    if (!m_reportsFrom.empty())
        for (std::string& report : MoDiffInput::readNames(m_reportsFrom, m_areNamesSeparated))
            m_asked.reports.push_back(std::move(report));
    m_asked.reportsFile = m_reportsFrom == "-" ? "" : m_reportsFrom;
    if (m_asked.reports.empty() && !m_reportsFrom.empty()) {
        MoDiffTrouble().report("nothing to compare: " + m_reportsFrom + " names no report");
        return finishOutput(eExitNothingCompared);
    }
    if (m_asked.reports.empty())
        throw std::invalid_argument("no report is given, neither as ACTUAL nor with --reports-from");
    if (!m_maxAge.empty()) {
        MoDiffSuiteConfiguration configuration;
        MoDiffConfigurationReader::setOption(configuration, "max-age", {m_maxAge}, "--max-age");
        m_asked.maxAge = configuration.maxAge;
    }
    return MoDiffVerification::run(m_asked);
}
