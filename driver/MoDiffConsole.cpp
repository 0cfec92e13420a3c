#include "MoDiffConsole.h"

#include "MoDiffShownText.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ostream>
#include <sstream>
#include <unistd.h>

using MoDiffShownText::escaped;

namespace {

std::size_t const kWordColumns = 11; // an outcome's word and what follows it
std::string const kIndent(kWordColumns, ' ');
std::size_t const kSideColumns = 8; // "master  "

MoDiffConsole::Colour colourOf(MoDiffOutcome outcome) {
    switch (outcome) {
    case MoDiffOutcome::ePassed:
        return MoDiffConsole::eGreen;
    case MoDiffOutcome::eMissing:
    case MoDiffOutcome::eExpected:
        return MoDiffConsole::eYellow;
    case MoDiffOutcome::eDifferent:
    case MoDiffOutcome::eUnexpectedlyPassed:
        return MoDiffConsole::eRed;
    default: // no verdict was reached
        return MoDiffConsole::eMagenta;
    }
}

} // namespace

bool MoDiffConsole::isColourful() {
    char const* const terminal = std::getenv("TERM");
    char const* const unwanted = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) && !(unwanted && *unwanted) && terminal && std::string_view(terminal) != "dumb";
}

std::string MoDiffConsole::coloured(Colour colour, std::string const& text) const {
    bool const isColoured = m_colours && colour != eNoColour && !text.empty();
    return isColoured ? "\x1b[" + std::to_string(colour) + "m" + text + "\x1b[0m" : text;
}

std::string MoDiffConsole::subjectOf(MoDiffPairResult const& result) const {
    return m_naming == eById ? escaped(result.id) : escaped(result.master) + "  " + escaped(result.actual);
}

void MoDiffConsole::showLine(MoDiffPairResult const& result) {
    std::string word = wordOf(result.outcome);
    word.resize(std::max(kWordColumns, word.size() + 2), ' ');
    m_out << coloured(colourOf(result.outcome), word) << subjectOf(result) << (result.detail.empty() ? "" : "  ")
          << MoDiffShownText::printable(result.detail) << '\n';
}

void MoDiffConsole::show(MoDiffPairResult const& result) {
    showLine(result);
    if (result.difference)
        showDifference(*result.difference);
    showOutput(result.output);
}

void MoDiffConsole::showWarnings(MoDiffPairResult const& result) {
    for (std::string const& warning : result.warnings)
        showNote(eYellow, "warning", m_naming == eById ? result.id : result.master, warning);
}

void MoDiffConsole::showNote(Colour colour, std::string const& word, std::string const& subject,
                             std::string const& text) {
    std::string padded = word;
    padded.resize(std::max(kWordColumns, word.size() + 2), ' ');
    m_out << coloured(colour, padded) << escaped(subject) << (text.empty() ? "" : "  ") << escaped(text) << '\n';
}

void MoDiffConsole::showDifference(MoDiffDifference const& difference) {
    auto const [master, actual] = MoDiffShownText::excerpts({difference.before.master, difference.after.master},
                                                            {difference.before.actual, difference.after.actual});
    std::size_t const columns = std::max(master.columnsBefore, actual.columnsBefore);
    auto const line = [&](char const* side, MoDiffShownText::Excerpt const& excerpt) {
        m_out << kIndent << side << std::string(columns - excerpt.columnsBefore, ' ') << excerpt.before
              << coloured(eRed, excerpt.after) << '\n';
    };
    line("master  ", master);
    line("actual  ", actual);
    m_out << kIndent << std::string(kSideColumns + columns, ' ') << coloured(eRed, "^");
    if (master.after.empty() || actual.after.empty())
        m_out << " the " << (master.after.empty() ? "master" : "actual") << " ends here";
    m_out << '\n';
}

void MoDiffConsole::showOutput(std::string const& output) {
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);)
        m_out << kIndent << MoDiffShownText::printable(line) << '\n';
}
