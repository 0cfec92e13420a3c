#include "MoDiffWatchConsole.h"

#include "MoDiffRunConsole.h"

#include <ctime>
#include <ostream>

namespace {

/// Pairs compared at one time of which each is shown, those that passed, too.
std::size_t constexpr kFew = 20;

std::string timeNow() {
    std::time_t const now = std::time(nullptr);
    std::tm parts = {};
    char text[16];
    localtime_r(&now, &parts);
    return {text, std::strftime(text, sizeof text, "%H:%M:%S", &parts)};
}

std::string counted(std::size_t number) {
    return std::to_string(number) + (number == 1 ? " pair" : " pairs");
}

} // namespace

MoDiffWatchConsole::MoDiffWatchConsole(std::ostream& out, Options const& options)
    : m_out(out), m_options(options), m_line(out, options.progress),
      m_console(out, MoDiffConsole::eById, options.colours) {
}

void MoDiffWatchConsole::finished(MoDiffPairResult const& result) {
    m_results[result.id] = result;
}

void MoDiffWatchConsole::progressed(Progress const& progress) {
    m_line.show(std::to_string(progress.done) + "/" + std::to_string(progress.all) + "  ", progress.longestRunning);
}

void MoDiffWatchConsole::show(Changes const& changes, MoDiffTotals const& totals) {
    m_line.clear();
    m_out << '\n' << timeNow() << "   " << counted(m_results.size()) << " compared\n";
    showPairs();
    for (std::string const& id : changes.gone)
        m_console.showNote(MoDiffConsole::eYellow, "gone", id, "no master any more");
    for (std::string const& sentence : changes.unreadable)
        m_console.showNote(MoDiffConsole::eRed, "unreadable", sentence, "masters may be overlooked");
    for (std::string const& file : changes.newFiles)
        m_console.showNote(MoDiffConsole::eYellow, "new", file, "no master");
    m_out << counted(totals.getAll()) << ": " << MoDiffRunConsole::inWords(totals) << std::endl;
    m_results.clear();
}

void MoDiffWatchConsole::showPairs() {
    bool const areAllShown = m_options.isVerbose || m_results.size() <= kFew;
    for (auto const& [id, result] : m_results) {
        if (areAllShown || result.outcome != MoDiffOutcome::ePassed)
            m_console.show(result);
        m_console.showWarnings(result);
    }
}
