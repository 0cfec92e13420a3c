#include "MoDiffInitCommand.h"

#include "MoDiffConfigurationReader.h"
#include "MoDiffConfigurationText.h"
#include "MoDiffDirectory.h"
#include "MoDiffGuardedFiles.h"
#include "MoDiffRunConsole.h"
#include "MoDiffShellWord.h"
#include "MoDiffShownText.h"
#include "MoDiffStatusLine.h"
#include "MoDiffSurveyConsole.h"
#include "MoDiffWholeFile.h"
#include "MoDiffWorkingDirectory.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>
#include <sstream>

namespace fs = std::filesystem;

using MoDiffShownText::escaped;

namespace {

char const kFooter[] =
    "Looks for folders named Masters below DIR, the current directory by default, and for the directory from which\n"
    "../webcontent is seen: DIR, one below it or one above it. Shows what it found and writes DIR/modiff.toml, with\n"
    "all keys and what they mean. What options say stands in the file, too.\n\n"
    "Exit status: 0 written, or shown with --dry-run; 2 trouble, and nothing is written: no masters, a directory "
    "that\n"
    "sees no ../webcontent, a file that is there already.";

/// Looks at something, and tells how far it has got once that takes longer than somebody likes to wait.
template<typename Look>
auto searched(Look const& look) {
    MoDiffRunConsole console(
        std::cout, {MoDiffStatusLine::suitableMode(), MoDiffConsole::isColourful(), MoDiffRunConsole::eFailures});
    return look(
        [&console](std::size_t directories, std::size_t masters) { console.discovering(directories, masters); });
}

std::string listed(std::set<std::string> const& directories) {
    std::string list;
    for (std::string const& directory : directories)
        list.append(list.empty() ? "" : ", ").append(directory);
    return list;
}

/// Where masters may lie that were not found; "" when nothing tells.
std::string hintAt(std::set<std::string> const& unreadable, std::set<std::string> const& nearlyMasters) {
    if (!unreadable.empty())
        return "; " + *unreadable.begin();
    return nearlyMasters.empty() ? "" : "; should " + *nearlyMasters.begin() + " be called so?";
}

std::string const kNoMasters = "there is nothing to be compared: no folder is named Masters below ";

[[noreturn]] void failWithoutOutput(MoDiffWorkingDirectory const& places, std::string const& start) {
    if (places.masterFolders == 0)
        throw std::runtime_error(kNoMasters + start + hintAt(places.unreadable, places.nearlyMasters));
    throw std::runtime_error("no directory sees " + MoDiffWorkingDirectory::outputRoot() + ", neither " + start +
                             " nor those from its folders Masters upwards, nor those above it; name it with "
                             "--working-directory, or have the reports rendered first");
}

} // namespace

MoDiffInitCommand::MoDiffInitCommand(CLI::App& parent)
    : MoDiffCommand(parent, "init", "Look at a tree and write modiff.toml for it", kFooter),
      m_configuration(options(), MoDiffConfigurationOptions::eOptionsAlone) {
    options().add_option("DIR", m_directory, "Directory that gets modiff.toml")->type_name("")->check(notEmpty());
    options()
        .add_option("--format", m_formats, "Compare only this format; repeatable")
        ->type_name("WORD")
        ->allow_extra_args(false)
        ->group("Configuration");
    options().add_flag("--dry-run", m_isTrial, "Show the file and write nothing");
    options().add_flag("--force", m_isForced, "Replace a modiff.toml that is there");
}

void MoDiffInitCommand::requireFree() const {
    if (!m_isForced && !m_isTrial && fs::symlink_status(m_file).type() != fs::file_type::not_found)
        throw std::runtime_error(m_file + " is there already; --force replaces it, --dry-run shows what would be "
                                          "written");
}

MoDiffSuiteConfiguration MoDiffInitCommand::readOptions() const {
    MoDiffSuiteConfiguration configuration = m_configuration.readOptions();
    if (isGiven("--format"))
        MoDiffConfigurationReader::setOption(configuration, "formats", m_formats, "--format");
    return configuration;
}

void MoDiffInitCommand::enterWorkingDirectory(MoDiffSuiteConfiguration& configuration) const {
    if (!isGiven("--working-directory")) {
        std::string const start = MoDiffDirectory::current();
        MoDiffWorkingDirectory const places = searched(MoDiffWorkingDirectory::find);
        if (places.found.empty())
            failWithoutOutput(places, start);
        if (places.found.size() > 1)
            throw std::runtime_error("several directories see " + MoDiffWorkingDirectory::outputRoot() + ": " +
                                     listed(places.found) + "; choose one with --working-directory");
        configuration.workingDirectory = *places.found.begin();
    }
    MoDiffConfigurationOptions::enterWorkingDirectory(configuration);
    configuration.workingDirectory = MoDiffDirectory::current(); // without links, from which no way leads back
}

MoDiffSurvey MoDiffInitCommand::survey(MoDiffSuiteConfiguration const& configuration) const {
    MoDiffSurvey survey =
        searched([&](MoDiffPlan::Progress const& progress) { return MoDiffSurvey::make(configuration, progress); });
    std::set<std::string> const unreadable(survey.plan.unreadable.begin(), survey.plan.unreadable.end());
    if (survey.plan.masterFolders == 0)
        throw std::runtime_error(kNoMasters + configuration.workingDirectory +
                                 hintAt(unreadable, survey.nearlyMasters));
    if (survey.plan.pairs.empty())
        throw std::runtime_error("there is nothing to be compared: the folders named Masters below " +
                                 configuration.workingDirectory + " hold no file of the formats" +
                                 hintAt(unreadable, {}));
    return survey;
}

void MoDiffInitCommand::write(MoDiffSurvey const& survey) const {
    std::string const directory = fs::path(m_file).parent_path().string();
    std::string const text = MoDiffConfigurationText::of(survey, directory);
    if (m_isTrial) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);)
            std::cout << MoDiffShownText::printable(line) << '\n';
        return;
    }
    requireFree();
    std::string const other = MoDiffConfigurationReader::find(directory);
    MoDiffWholeFile::write(m_file, text);
    if (!other.empty() && other != m_file)
        std::cout << "note       " << escaped(other) << "  is no longer the one that holds here\n";
    std::string const shown = fs::path(m_file).lexically_relative(m_start).string();
    std::cout << "written    " << escaped(shown.rfind("..", 0) == 0 ? m_file : shown) << '\n';
    std::cout << "next       " << escaped(nextCommand()) << "  compares all pairs\n";
}

/// Without an option, a run takes the nearest file from the current directory upwards.
std::string MoDiffInitCommand::nextCommand() const {
    bool const isNearest = MoDiffConfigurationReader::find(m_start) == m_file;
    return isNearest ? "modiff run" : "modiff run --config " + MoDiffShellWord::asNeeded(m_file);
}

int MoDiffInitCommand::run() {
    MoDiffSuiteConfiguration configuration = readOptions(); // paths of options are seen from where we are
    m_start = MoDiffDirectory::current();
    std::error_code error;
    fs::current_path(m_directory, error);
    if (error)
        throw std::system_error(error, "cannot enter the directory " + m_directory);
    m_file = MoDiffDirectory::current() + "/" + MoDiffConfigurationReader::kFileName;
    requireFree();
    enterWorkingDirectory(configuration);
    MoDiffSurvey const found = survey(configuration);
    MoDiffGuardedFiles files;
    files.protectTree(found.configuration);
    files.requireOutside(m_file, "the configuration");
    MoDiffSurveyConsole(std::cout, MoDiffConsole::isColourful()).show(found);
    write(found);
    return finishOutput(eExitPassed);
}
