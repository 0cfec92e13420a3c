#include "MoDiffSurveyConsole.h"

#include "MoDiffWorkingDirectory.h"

#include <iomanip>
#include <ostream>

namespace {

/// Doubts of one kind that are told one by one.
std::size_t constexpr kMostOfAKind = 5;

std::string counted(std::size_t number, std::string const& thing) {
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

} // namespace

void MoDiffSurveyConsole::show(MoDiffSurvey const& survey) {
    showPlace(survey);
    showFormats(survey);
    showTables(survey);
    showSubDirectories(survey);
    showDoubts(survey);
    m_out << '\n';
}

void MoDiffSurveyConsole::showPlace(MoDiffSurvey const& survey) {
    std::string const root = MoDiffWorkingDirectory::outputRoot();
    bool const isSeen = MoDiffWorkingDirectory::seesOutput(".");
    m_console.showNote(isSeen ? MoDiffConsole::eGreen : MoDiffConsole::eYellow, "directory",
                       survey.configuration.workingDirectory,
                       isSeen ? "the working directory, from which " + root + " is seen"
                              : "the working directory, though " + root + " is not there: no actual file is");
}

void MoDiffSurveyConsole::showFormats(MoDiffSurvey const& survey) {
    m_out << "\nformat        masters  actual files\n";
    for (MoDiffSurvey::Format const& format : survey.formats)
        m_out << std::left << std::setw(14) << format.row->word << std::right << std::setw(7) << format.masters
              << std::setw(14) << format.actuals << '\n';
    m_out << '\n';
}

void MoDiffSurveyConsole::showTables(MoDiffSurvey const& survey) {
    for (MoDiffFolderSearch::Table const& table : survey.tables) {
        std::string const& folder = table.folder.masterSubDirectory;
        std::string const& suffix = table.folder.masterSuffix;
        m_console.showNote(table.isGuess ? MoDiffConsole::eYellow : MoDiffConsole::eGreen, table.format->word,
                           (folder.empty() ? "Masters" : "Masters/" + folder) +
                               (suffix.empty() ? "" : "/*_" + suffix),
                           "for " + MoDiffWorkingDirectory::outputRoot() + "/" + table.folder.typeName +
                               (table.isGuess ? ", a guess: no file of these names lies in any" : ""));
    }
}

void MoDiffSurveyConsole::showSubDirectories(MoDiffSurvey const& survey) {
    std::string list;
    for (std::string const& name : survey.subDirectories)
        if (!name.empty())
            list.append(list.empty() ? "" : ", ").append(name);
    if (!list.empty())
        m_console.showNote(MoDiffConsole::eGreen, "below", list, "sub-directories of Masters, such as languages");
}

void MoDiffSurveyConsole::showDoubts(MoDiffSurvey const& survey) {
    for (std::string const& sentence : survey.plan.unreadable)
        m_console.showNote(MoDiffConsole::eRed, "unreadable", sentence, "masters may be overlooked");
    std::size_t shown = 0;
    for (auto const& [directory, number] : survey.idle)
        if (++shown <= kMostOfAKind)
            m_console.showNote(MoDiffConsole::eYellow, "no format", directory,
                               counted(number, "file") + " that nothing reads");
    if (shown > kMostOfAKind)
        m_console.showNote(MoDiffConsole::eYellow, "no format", "",
                           "and " + std::to_string(shown - kMostOfAKind) + " more; modiff doctor lists them");
    for (std::string const& directory : survey.nearlyMasters)
        m_console.showNote(MoDiffConsole::eYellow, "name", directory,
                           "is not searched, since it is not called Masters");
    std::size_t shared = 0;
    for (MoDiffPair const& pair : survey.plan.pairs)
        shared += !pair.warnings.empty();
    if (shared > 0)
        m_console.showNote(MoDiffConsole::eYellow, "shared", counted(shared, "master"),
                           "have an actual file that belongs to another one, too; modiff doctor lists them");
    if (!survey.plan.newFiles.empty())
        m_console.showNote(MoDiffConsole::eYellow, "new", counted(survey.plan.newFiles.size(), "actual file"),
                           "without master, which modiff run lists");
}
