#include "MoDiffConsole.h"

#include "MoDiffFirstDifference.h"

#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <unistd.h>

using MoDiffShownText::escaped;
using MoDiffShownText::Excerpt;

namespace {

std::string const kIndent(11, ' '); // the outcome's word and what follows it

std::string counted(unsigned long count, char const* one, char const* many) {
    return std::to_string(count) + (count == 1 ? one : many);
}

} // namespace

MoDiffConsole::MoDiffConsole(std::ostream& out, bool colours) : m_out(out), m_colours(colours) {
}

bool MoDiffConsole::isColourful() {
    char const* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) && !std::getenv("NO_COLOR") && terminal && std::string_view(terminal) != "dumb";
}

std::string MoDiffConsole::coloured(Colour colour, std::string const& text) const {
    return m_colours ? "\x1b[" + std::to_string(colour) + "m" + text + "\x1b[0m" : text;
}

void MoDiffConsole::startLine(Colour colour, char const* word, std::string const& first, std::string const& second) {
    std::string padded = word;
    padded.resize(kIndent.size(), ' ');
    m_out << coloured(colour, padded) << escaped(first) << "  " << escaped(second);
}

void MoDiffConsole::startLine(Colour colour, char const* word, MoDiffResult const& result) {
    startLine(colour, word, result.getMasterName(), result.getActualName());
}

void MoDiffConsole::comparisonNotification(MoDiffResultPass const& result) {
    ++m_passed;
    startLine(eGreen, "passed", result);
    m_out << '\n';
}

void MoDiffConsole::comparisonNotification(MoDiffResultFail const& result) {
    ++m_different;
    startLine(eRed, "different", result);
    m_out << '\n';
}

void MoDiffConsole::comparisonNotification(MoDiffResultFailDiff const& result) {
    std::optional<MoDiffFirstDifference> difference;
    if (m_comparison == MoDiffFormatRow::eText || m_comparison == MoDiffFormatRow::eBytes)
        difference = MoDiffFirstDifference::find(result.getMasterName(), result.getActualName(),
                                                 /*withoutReturns=*/m_comparison == MoDiffFormatRow::eText);
    if (difference)
        showDifference(result, "in line " + std::to_string(difference->line), difference->master, difference->actual,
                       difference->place);
    else
        comparisonNotification(static_cast<MoDiffResultFail const&>(result));
}

void MoDiffConsole::comparisonNotification(MoDiffResultFailDiffNormalized const& result) {
    long const position = result.getDiffPosition();
    showDifference(result, "at byte " + std::to_string(position) + " of the normalized texts",
                   result.getNormalizedMaster(), result.getNormalizedActual(), static_cast<std::size_t>(position));
}

void MoDiffConsole::comparisonNotification(MoDiffResultFailFileMissing const& result) {
    ++m_missing;
    startLine(eYellow, "missing", result);
    m_out << "  no " << (result.getMissingFile() == result.getMasterName() ? "master" : "actual") << " file\n";
}

void MoDiffConsole::showWithoutMaster(std::string const& report, std::string const& glob) {
    ++m_withoutMaster;
    startLine(eYellow, "no master", report, "");
    m_out << "nothing compared: no file is named " << escaped(glob) << '\n';
}

void MoDiffConsole::showDifference(MoDiffResult const& result, std::string const& place, Excerpt const& master,
                                   Excerpt const& actual) {
    ++m_different;
    startLine(eRed, "different", result);
    std::size_t const columns = std::max(master.columnsBefore, actual.columnsBefore);
    m_out << "  " << place << '\n';
    showExcerpt("master", master, columns);
    showExcerpt("actual", actual, columns);
    m_out << kIndent << std::string(8 + columns, ' ') << coloured(eRed, "^");
    if (master.after.empty() || actual.after.empty())
        m_out << " the " << (master.after.empty() ? "master" : "actual") << " ends here";
    m_out << '\n';
}

void MoDiffConsole::showDifference(MoDiffResult const& result, std::string const& place, std::string_view master,
                                   std::string_view actual, std::size_t position) {
    auto const [masterExcerpt, actualExcerpt] = MoDiffShownText::excerpts(master, actual, position);
    showDifference(result, place, masterExcerpt, actualExcerpt);
}

void MoDiffConsole::showExcerpt(char const* side, Excerpt const& excerpt, std::size_t columnsBefore) {
    m_out << kIndent << side << "  " << std::string(columnsBefore - excerpt.columnsBefore, ' ') << excerpt.before
          << coloured(eRed, excerpt.after) << '\n';
}

void MoDiffConsole::showCounts(unsigned long troubles) {
    m_out << counted(getCompared(), " master compared: ", " masters compared: ") << m_passed << " passed, "
          << m_different << " different, " << m_missing << " missing";
    if (m_withoutMaster)
        m_out << "; " << counted(m_withoutMaster, " report", " reports") << " without a master";
    if (troubles)
        m_out << "; trouble with " << counted(troubles, " report", " reports");
    m_out << '\n';
}
