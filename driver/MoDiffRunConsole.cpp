#include "MoDiffRunConsole.h"

#include "MoDiffFormatTable.h"
#include "MoDiffShownText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace {

std::size_t const kSlowest = 5;
std::size_t const kFormatColumns = 12;
double const kSlowSeconds = 0.1; // what took less is not worth a line
double const kPatience = 2;      // seconds
std::chrono::seconds const kFlush{1};

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// "0:04", "1:02:03".
std::string clockOf(double seconds) {
    auto const all = static_cast<unsigned long long>(std::llround(seconds));
    char text[40];
    if (all < 3600)
        std::snprintf(text, sizeof text, "%llu:%02llu", all / 60, all % 60);
    else
        std::snprintf(text, sizeof text, "%llu:%02llu:%02llu", all / 3600, all / 60 % 60, all % 60);
    return text;
}

std::string shownSeconds(double seconds) {
    char text[40];
    std::snprintf(text, sizeof text, seconds < 100 ? "%.1f s" : "%.0f s", seconds);
    return text;
}

std::string padded(std::string text, std::size_t columns) {
    text.resize(std::max(text.size(), columns), ' ');
    return text;
}

/// A column of the table of formats.
struct Column {
    char const* word;
    std::vector<MoDiffOutcome> outcomes;
};

std::vector<Column> const kColumns = {
    {"passed", {MoDiffOutcome::ePassed}},
    {"different", {MoDiffOutcome::eDifferent}},
    {"missing", {MoDiffOutcome::eMissing}},
    {"trouble", {MoDiffOutcome::eError, MoDiffOutcome::eCrashed, MoDiffOutcome::eTimeout, MoDiffOutcome::eMemory}},
    {"expected", {MoDiffOutcome::eExpected}},
    {"unexpected", {MoDiffOutcome::eUnexpectedlyPassed}},
};

std::size_t countOf(MoDiffTotals const& totals, Column const& column) {
    std::size_t count = 0;
    for (MoDiffOutcome const outcome : column.outcomes)
        count += totals.getCount(outcome);
    return count;
}

/// All outcomes, in the order in which they are counted.
std::vector<MoDiffOutcome> outcomes() {
    std::vector<MoDiffOutcome> all;
    for (std::size_t index = 0; index < kMoDiffOutcomes; ++index)
        all.push_back(static_cast<MoDiffOutcome>(index));
    return all;
}

} // namespace

MoDiffRunConsole::MoDiffRunConsole(std::ostream& out, Options const& options)
    : m_out(out), m_options(options), m_line(out, options.progress),
      m_console(out, MoDiffConsole::eById, options.colours), m_start(std::chrono::steady_clock::now()),
      m_lastFlush(m_start) {
}

void MoDiffRunConsole::discovering(std::size_t directories, std::size_t masters) {
    if (secondsSince(m_start) >= kPatience)
        m_line.show("searching: " + std::to_string(directories) + " directories, " + std::to_string(masters) +
                        " masters",
                    "");
}

void MoDiffRunConsole::started(std::size_t) {
    m_isStarted = true;
    m_start = std::chrono::steady_clock::now();
}

void MoDiffRunConsole::takenUp(MoDiffPairResult const& result) {
    ++m_takenUp;
    take(result);
}

void MoDiffRunConsole::finished(MoDiffPairResult const& result) {
    take(result);
    noteSlow(result);
    if (m_options.listing == eAtEnd || (m_options.listing == eFailures && !isFailure(result.outcome)))
        return;
    m_line.clear();
    m_console.showLine(result);
}

void MoDiffRunConsole::take(MoDiffPairResult const& result) {
    m_totals.add(result.outcome);
    m_formats[result.format].add(result.outcome);
    auto const keep = [&](std::map<std::string, std::string>& kept, auto show) {
        std::ostringstream text;
        MoDiffConsole console(text, MoDiffConsole::eById, m_options.colours);
        (console.*show)(result);
        kept[result.id] = text.str();
    };
    if (result.outcome != MoDiffOutcome::ePassed)
        keep(m_failures, &MoDiffConsole::show);
    if (!result.warnings.empty())
        keep(m_warnings, &MoDiffConsole::showWarnings);
}

void MoDiffRunConsole::noteSlow(MoDiffPairResult const& result) {
    if (result.seconds < kSlowSeconds)
        return;
    auto const place = std::find_if(m_slowest.begin(), m_slowest.end(),
                                    [&](Slow const& slow) { return slow.seconds < result.seconds; });
    m_slowest.insert(place, {result.seconds, result.id});
    m_slowest.resize(std::min(m_slowest.size(), kSlowest));
}

void MoDiffRunConsole::progressed(Progress const& progress) {
    auto const now = std::chrono::steady_clock::now();
    if (now - m_lastFlush >= kFlush) {
        m_out.flush();
        m_lastFlush = now;
    }
    std::string state = stateOf(progress);
    if (!progress.longestRunning.empty())
        state += "  " + std::to_string(progress.since.count() / 1000) + " s: ";
    m_line.show(state, progress.longestRunning);
}

std::string MoDiffRunConsole::stateOf(Progress const& progress) const {
    std::string state = std::to_string(progress.done) + "/" + std::to_string(progress.all) + "  " +
                        std::to_string(m_totals.getFailures()) + " failed";
    double const seconds = secondsSince(m_start);
    std::size_t const compared = progress.done - std::min(progress.done, m_takenUp);
    if (compared == 0 || seconds <= 0)
        return state;
    double const rate = static_cast<double>(compared) / seconds;
    char shown[40];
    std::snprintf(shown, sizeof shown, rate < 10 ? "%.1f" : "%.0f", rate);
    return state + "  " + shown + "/s  " + clockOf(static_cast<double>(progress.all - progress.done) / rate) +
           " left";
}

void MoDiffRunConsole::showEnd(std::vector<std::string> const& newFiles, std::vector<std::string> const& unreadable) {
    m_line.clear();
    showFailures();
    for (auto const& [id, text] : m_warnings)
        m_out << text;
    for (std::string const& sentence : unreadable)
        m_console.showNote(MoDiffConsole::eRed, "unreadable", sentence, "masters may be overlooked");
    for (std::string const& file : newFiles)
        m_console.showNote(MoDiffConsole::eYellow, "new", file, "no master");
    if (!m_failures.empty() || !m_warnings.empty() || !newFiles.empty() || !unreadable.empty())
        m_out << '\n';
    showFormats();
    showSlowest();
    showTotals();
}

void MoDiffRunConsole::showFailures() {
    if (!m_failures.empty())
        m_out << "\nNot passed:\n";
    for (auto const& [id, text] : m_failures)
        m_out << text;
}

/// Outcomes that nothing had leave no column.
void MoDiffRunConsole::showFormats() {
    if (m_formats.size() < 2)
        return;
    m_out << padded("format", kFormatColumns) << "  pairs";
    for (Column const& column : kColumns)
        if (countOf(m_totals, column) > 0)
            m_out << "  " << column.word;
    for (auto const& [format, counts] : m_formats) {
        m_out << '\n' << padded(format, kFormatColumns) << std::setw(7) << counts.getAll();
        for (Column const& column : kColumns) {
            std::size_t const count = countOf(counts, column);
            if (countOf(m_totals, column) > 0)
                m_out << std::setw(static_cast<int>(std::strlen(column.word) + 2))
                      << (count > 0 ? std::to_string(count) : "-");
        }
    }
    m_out << "\n\n";
}

void MoDiffRunConsole::showSlowest() {
    if (m_slowest.empty())
        return;
    m_out << "slowest\n";
    for (Slow const& slow : m_slowest)
        m_out << std::setw(10) << shownSeconds(slow.seconds) << "  " << MoDiffShownText::escaped(slow.id) << '\n';
    m_out << '\n';
}

void MoDiffRunConsole::showTotals() {
    std::size_t const all = m_totals.getAll();
    m_out << all << (all == 1 ? " pair" : " pairs");
    if (m_isStarted)
        m_out << " in " << shownSeconds(secondsSince(m_start));
    m_out << ": " << inWords(m_totals);
    if (!m_warnings.empty())
        m_out << "; " << m_warnings.size() << (m_warnings.size() == 1 ? " pair" : " pairs") << " with warnings";
    if (m_takenUp > 0)
        m_out << "; " << m_takenUp << " from the record";
    m_out << '\n';
}

std::string MoDiffRunConsole::inWords(MoDiffTotals const& totals) {
    std::string words;
    for (MoDiffOutcome const outcome : outcomes()) {
        std::size_t const count = totals.getCount(outcome);
        if (count > 0 || outcome == MoDiffOutcome::ePassed)
            words.append(words.empty() ? "" : ", ").append(std::to_string(count)).append(" ").append(wordOf(outcome));
    }
    return words;
}

bool MoDiffRunConsole::isScriptInTrouble() const {
    return std::any_of(m_formats.begin(), m_formats.end(), [](auto const& format) {
        MoDiffFormatRow const* const row = MoDiffFormatTable::find(format.first);
        return row && row->tool && format.second.getCount(MoDiffOutcome::eError) == format.second.getAll();
    });
}
