#include "MoDiffCommandLine.h"

#include "MoDiffAcceptCommand.h"
#include "MoDiffAuditCommand.h"
#include "MoDiffCompletion.h"
#include "MoDiffDoctorCommand.h"
#include "MoDiffFormatsCommand.h"
#include "MoDiffInitCommand.h"
#include "MoDiffInstallToolsCommand.h"
#include "MoDiffJunitCommand.h"
#include "MoDiffMergeCommand.h"
#include "MoDiffNearestWord.h"
#include "MoDiffNumbersCommand.h"
#include "MoDiffOptionTable.h"
#include "MoDiffReportCommand.h"
#include "MoDiffRetireCommand.h"
#include "MoDiffReviewCommand.h"
#include "MoDiffRunCommand.h"
#include "MoDiffShowCommand.h"
#include "MoDiffTrouble.h"
#include "MoDiffVerifyCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>

namespace {

char const kAbout[] = "Verifies the output of a report server against stored masters.";
char const kFooter[] = "Exit status: 0 all passed; 1 a difference or a missing file; 2 trouble; 3 nothing compared.\n"
                       "2 counts before 1, 1 before 3.\n\n`modiff COMMAND --help` tells more.";

using Commands = std::vector<std::unique_ptr<MoDiffCommand>>;

template<typename Command>
std::unique_ptr<MoDiffCommand> make(CLI::App& parent) {
    return std::make_unique<Command>(parent);
}

/// In the order of `modiff --help`.
std::unique_ptr<MoDiffCommand> (*const kCommands[])(CLI::App&) = {
    make<MoDiffInitCommand>,    make<MoDiffRunCommand>,     make<MoDiffMergeCommand>,
    make<MoDiffDoctorCommand>,  make<MoDiffVerifyCommand>,  make<MoDiffShowCommand>,
    make<MoDiffReportCommand>,  make<MoDiffReviewCommand>,  make<MoDiffAcceptCommand>,
    make<MoDiffRetireCommand>,  make<MoDiffJunitCommand>,   make<MoDiffAuditCommand>,
    make<MoDiffFormatsCommand>, make<MoDiffNumbersCommand>, make<MoDiffInstallToolsCommand>,
};

/// The arguments last to first, as the parser wants them. It would take a report called [a,b] for the list a, b, and
/// one that stands behind "--" for an option when reports stand before it, too. Such names are given as paths, which
/// mean the same files, or marked.
std::vector<std::string> parserArguments(int count, char** arguments, Commands const& commands) {
    auto const asked = std::find_if(commands.begin(), commands.end(), [&](auto const& command) {
        return count > 1 && command->getWord() == arguments[1];
    });
    bool const areFiles = asked == commands.end() || (*asked)->takesFiles();
    std::string const mark = areFiles ? "./" : std::string(1, MoDiffCommand::kVerbatim);
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
        bool const isDashed = onlyNames && !argument.empty() && argument.front() == '-';
        result.push_back((isList && !isSuffix) || isDashed ? mark + argument : argument);
    }
    std::reverse(result.begin(), result.end());
    return result;
}

/// The command that is being read; the program itself before its command is known.
CLI::App const& current(CLI::App const& app) {
    std::vector<CLI::App const*> const commands = app.get_subcommands([](CLI::App const*) { return true; });
    auto const asked = std::find_if(commands.begin(), commands.end(), [](auto command) { return command->parsed(); });
    return asked == commands.end() ? app : **asked;
}

std::vector<std::string> commandWords(CLI::App const& app) {
    std::vector<std::string> words;
    for (CLI::App const* const command : app.get_subcommands([](CLI::App const*) { return true; }))
        words.push_back(command->get_name());
    return words;
}

std::vector<std::string> optionWords(CLI::App const& app) {
    std::vector<std::string> words;
    for (CLI::Option const* const option : app.get_options())
        for (std::string const& name : option->get_lnames())
            words.push_back("--" + name);
    return words;
}

/// Says what is wrong with the command line. A word that is not known is the reason rather than what is missing
/// because of it.
std::string complaint(CLI::App const& app, CLI::ParseError const& error) {
    CLI::App const& command = current(app);
    std::vector<std::string> const unknown = app.remaining(/*recurse=*/true);
    if (unknown.empty())
        return error.what();
    std::string const word = unknown.front().substr(0, unknown.front().find('='));
    if (!word.empty() && word.front() == '-')
        return "there is no option " + word + MoDiffNearestWord::hint(word, optionWords(command));
    if (&command == &app)
        return "there is no command " + word + MoDiffNearestWord::hint(word, commandWords(app));
    return unknown.front() + " is one argument too many";
}

/// What shells and the build of the manual ask the program about itself. Taken before everything else, since the
/// words to be completed are no command line yet.
bool answerAboutItself(CLI::App const& app, std::vector<std::string> const& arguments) {
    std::string const question = arguments.empty() ? "" : arguments.front();
    if (question == "--complete")
        MoDiffCompletion::print(app, {arguments.begin() + 1, arguments.end()}, std::cout);
    else if (question == "--dump-options")
        MoDiffOptionTable::print(app, std::cout);
    else
        return false;
    return true;
}

int complain(CLI::App const& app, CLI::ParseError const& error) {
    CLI::App const& command = current(app);
    std::string const name = &command == &app ? "" : command.get_name() + " ";
    MoDiffTrouble().report(complaint(app, error) + "; `modiff " + name + "--help` tells more");
    return eExitTrouble;
}

} // namespace

int MoDiffCommandLine::run(int count, char** arguments) {
    CLI::App app(kAbout, "modiff");
    app.set_version_flag("--version", "modiff " MODIFF_VERSION);
    app.require_subcommand(1);
    app.footer(kFooter);
    Commands commands;
    for (auto const& makeCommand : kCommands)
        commands.push_back(makeCommand(app));
    if (answerAboutItself(app, {arguments + std::min(count, 1), arguments + count}))
        return MoDiffCommand::finishOutput(eExitPassed);
    try {
        app.parse(parserArguments(count, arguments, commands));
    } catch (CLI::Success const& asked) { // help or version
        app.exit(asked, std::cout, std::cerr);
        return MoDiffCommand::finishOutput(eExitPassed);
    } catch (CLI::ParseError const& error) {
        return complain(app, error);
    }
    return (*std::find_if(commands.begin(), commands.end(), [](auto& command) { return command->isAsked(); }))->run();
}
