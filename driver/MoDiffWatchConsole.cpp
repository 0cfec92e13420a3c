#include "MoDiffWatchConsole.h"

#include "MoDiffRunConsole.h"

#include <ctime>
#include <ostream>

namespace {

/// When more pairs are compared at one time, no more are shown than that, and of those that passed none.
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
        m_console.showNote(MoDiffConsole::eYellow, "gone", id, "not found any more");
    for (std::string const& sentence : changes.unreadable)
        m_console.showNote(MoDiffConsole::eRed, "unreadable", sentence, "masters may be overlooked");
    for (std::string const& file : changes.newFiles)
        m_console.showNote(MoDiffConsole::eYellow, "new", file, "no master");
    m_out << counted(totals.getAll()) << ": " << MoDiffRunConsole::inWords(totals) << std::endl;
    m_results.clear();
}

void MoDiffWatchConsole::showPairs() {
    bool const areFew = m_options.isVerbose || m_results.size() <= kFew;
    std::size_t shown = 0;
    std::size_t rest = 0;
    for (auto const& [id, result] : m_results) {
        bool const isOfInterest = result.outcome != MoDiffOutcome::ePassed || !result.warnings.empty();
        if (!areFew && (!isOfInterest || shown == kFew)) {
            rest += isOfInterest;
            continue;
        }
        ++shown;
        m_console.show(result);
        m_console.showWarnings(result);
    }
    if (rest > 0)
        m_out << "and " << counted(rest) << " more that did not pass, or with warnings; modiff show lists them\n";
}
