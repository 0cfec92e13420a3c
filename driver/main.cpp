#include "MoDiffConsole.h"
#include "MoDiffInstallTools.h"
#include "MoDiffNumbers.h"
#include "MoDiffTrouble.h"
#include "MoDiffVerification.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <iomanip>
#include <iostream>
#include <unistd.h>

namespace {

char const kAbout[] = "Verifies the output of a report server against stored masters.";
char const kStatuses[] = "Exit status: 0 all passed; 1 a difference or a missing file; 2 trouble: a bad option, an\n"
                         "error, a log that cannot be written, a script or module that is missing; 3 a report has\n"
                         "no master, so nothing was compared. 2 counts before 1, 1 before 3.";

std::map<std::string, eLogLevel> const kLogLevels = {{"none", eLogNone},
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

MoDiffExitStatus finishOutput(MoDiffExitStatus status) {
    if (std::cout.flush())
        return status;
    MoDiffTrouble().report("cannot write standard output");
    return eExitTrouble;
}

/// The subcommand modiff verify.
class VerifyCommand {
public:
    explicit VerifyCommand(CLI::App& parent) : m_command(*parent.add_subcommand("verify", "Verify reports")) {
        m_command.footer(
            std::string("Each report's masters lie in the folder Masters beside it, the files compared "
                        "with them in\n../webcontent/, seen from the working directory; `modiff formats` "
                        "shows the places.\n\n") +
            kStatuses);
        addOptions();
        addEngineOptions();
    }

    bool isAsked() const { return m_command.parsed(); }

    MoDiffExitStatus run() const {
        if (m_options.quiet)
            silenceOutput();
        return MoDiffVerification::run(m_options);
    }

private:
    void addOptions() {
        m_command.add_option("--format", m_options.format, "Output format, a word of `modiff formats`")
            ->type_name("WORD")
            ->required();
        m_command.add_option("--summary", m_options.summaryFile, "Write an XML test summary to this file")
            ->type_name("FILE");
        m_command.add_flag("--normalized", m_options.normalized,
                           "Write the two normalized texts of a difference beside the actual file");
        CLI::Option* const log =
            m_command.add_option("--log", m_options.logFile, "Record the run as a test harness script in this file")
                ->type_name("FILE");
        m_command
            .add_option("--log-level", m_options.logLevel,
                        "How much the log tells: none, minimal, concise, normal (default) or detailed")
            ->transform(CLI::CheckedTransformer(kLogLevels, CLI::ignore_case).description(""))
            ->type_name("LEVEL")
            ->needs(log);
        m_command.add_flag("--quiet", m_options.quiet, "Print nothing but trouble; the exit status tells");
        m_command
            .add_option("ACTUAL", m_options.reports, "Reports as the server produced them; only their paths count")
            ->type_name("")
            ->required();
    }

    void addEngineOptions() {
        MoDiffEngineSettings& engine = m_options.engine;
        m_command
            .add_option("--sub-directory", engine.subDirectory,
                        "Directory below both the masters' and the output directory, a language, say")
            ->type_name("DIR");
        m_command.add_option("--type-name", engine.typeName, "tvd, prp: name of the output directory (required)")
            ->type_name("NAME");
        m_command
            .add_option("--master-sub-directory", engine.masterSubDirectory,
                        "tvd, prp: folder below the masters' directory")
            ->type_name("DIR");
        m_command
            .add_option("--master-suffix", engine.masterSuffix,
                        "tvd: what follows \"_\" at the end of the masters' names")
            ->type_name("TEXT");
    }

    CLI::App& m_command;
    MoDiffVerificationOptions m_options;
};

MoDiffExitStatus showFormats() {
    MoDiffEngineSettings const example = {"", "TYPE-NAME", "MASTER-SUB-DIRECTORY", "SUFFIX"};
    std::cout << "For the report DIR/REPORT, seen from the working directory:\n\n"
              << std::left << std::setw(14) << "FORMAT" << std::setw(22) << "COMPARED AS" << std::setw(34)
              << "ACTUAL FILES IN"
              << "MASTERS\n";
    for (MoDiffFormatRow const& row : MoDiffFormatTable::rows()) {
        auto const engine = row.makeEngine(example);
        std::cout << std::setw(14) << row.word << std::setw(22) << MoDiffFormatTable::comparisonWords(row)
                  << std::setw(34) << engine->getOutputDirectory()
                  << engine->getMasterFileGlobExpression("DIR/REPORT") << '\n';
    }
    std::cout << "\n--sub-directory S puts /S behind the actual files' directory and behind Masters.\n";
    return finishOutput(eExitPassed);
}

MoDiffExitStatus compareNumbers(std::string const& master, std::string const& actual) {
    MoDiffConsole console(std::cout, MoDiffConsole::isColourful());
    MoDiffNumbers::compare(master, actual, console);
    return finishOutput(console.getFailed() ? eExitDifferent : eExitPassed);
}

MoDiffExitStatus installTools(std::string const& directory) {
    MoDiffInstallTools::install(directory, std::cout);
    return finishOutput(eExitPassed);
}

/// The arguments last to first, as the parser wants them. It would take a report called [a,b] for the list a, b, and
/// one that stands behind "--" for an option when reports stand before it, too. Such names are given as paths, which
/// mean the same files.
std::vector<std::string> parserArguments(int count, char** arguments) {
    std::vector<std::string> result;
    bool onlyNames = false;
    for (int index = 1; index < count; ++index) {
        std::string const argument = arguments[index];
        if (!onlyNames && argument == "--") {
            onlyNames = true;
            continue;
        }
        bool const isList = !argument.empty() && argument.front() == '[' && argument.back() == ']';
        bool const isSuffix = !result.empty() && result.back() == "--master-suffix";
        bool const isDashed = onlyNames && argument.front() == '-';
        result.push_back((isList && !isSuffix) || isDashed ? "./" + argument : argument);
    }
    std::reverse(result.begin(), result.end());
    return result;
}

/// A file that is opened must not take the number of a standard stream that was closed.
void fillStandardStreams() {
    while (true) {
        int const descriptor = open("/dev/null", O_RDWR);
        if (descriptor > STDERR_FILENO)
            close(descriptor);
        if (descriptor < 0 || descriptor > STDERR_FILENO)
            return;
    }
}

MoDiffExitStatus runCommandLine(int count, char** arguments) {
    CLI::App app(kAbout, "modiff");
    app.set_version_flag("--version", "modiff " MODIFF_VERSION);
    app.require_subcommand(1);
    app.footer(std::string(kStatuses) + "\n\n`modiff COMMAND --help` tells more.");
    VerifyCommand const verify(app);
    CLI::App const& formats = *app.add_subcommand("formats", "List the output formats and where their files lie");
    CLI::App& numbers = *app.add_subcommand("numbers", "Compare the numbers in two texts, within a small tolerance");
    CLI::App& tools =
        *app.add_subcommand("install-tools", "Lay out the scripts that compare xlsx, pdf and vmd files");
    std::string master, actual, directory;
    numbers.add_option("MASTER", master, "Text with the expected numbers")->type_name("")->required();
    numbers.add_option("ACTUAL", actual, "Text with the produced numbers")->type_name("")->required();
    tools.add_option("DIR", directory, "Directory two levels above the one that modiff is run in")
        ->type_name("")
        ->required();
    try {
        app.parse(parserArguments(count, arguments));
    } catch (CLI::Success const& asked) { // help or version
        app.exit(asked, std::cout, std::cerr);
        return finishOutput(eExitPassed);
    } catch (CLI::ParseError const& error) {
        MoDiffTrouble().report(std::string(error.what()) + "; `modiff --help` tells more");
        return eExitTrouble;
    }
    if (verify.isAsked())
        return verify.run();
    if (formats.parsed())
        return showFormats();
    return numbers.parsed() ? compareNumbers(master, actual) : installTools(directory);
}

} // namespace

int main(int count, char** arguments) {
    fillStandardStreams();
    std::signal(SIGPIPE, SIG_IGN); // a reader that goes away must not keep summary and log from being completed
    try {
        return runCommandLine(count, arguments);
    } catch (std::exception const& error) {
        MoDiffTrouble().report("cannot go on", error);
        return eExitTrouble;
    }
}
