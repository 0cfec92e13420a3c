#include "MoDiffAuditConsole.h"

#include "MoDiffFormatTable.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <ostream>

using MoDiffShownText::escaped;

namespace {

std::string const kIndent(11, ' ');

std::size_t columnsOf(std::string const& shown) {
    return MoDiffShownText::fit(shown, std::numeric_limits<std::size_t>::max()).columns;
}

std::string padded(std::string const& shown, std::size_t columns) {
    return shown + std::string(columns - std::min(columns, columnsOf(shown)), ' ');
}

std::string percentWords(double part, double whole) {
    std::array<char, 40> words{};
    std::snprintf(words.data(), words.size(), "%.1f", whole > 0 ? part * 100 / whole : 0);
    return words.data();
}

std::string countWords(std::size_t count, char const* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::vector<std::string> amountCells(MoDiffAudit::Amount const& amount) {
    return {std::to_string(amount.pairs), std::to_string(amount.bytes), std::to_string(amount.hidden),
            percentWords(static_cast<double>(amount.hidden), static_cast<double>(amount.bytes)),
            std::to_string(amount.differing)};
}

std::string placeWords(std::string const& file, MoDiffPlace const& place) {
    return escaped(file) + ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
}

/// A path without the "./" of plans.
std::string shortened(std::string const& path) {
    return path.rfind("./", 0) == 0 ? path.substr(2) : path;
}

} // namespace

/// The first column stands left, numbers right; a column behind those of the title is words.
void MoDiffAuditConsole::showTable(std::vector<Row> const& rows) {
    std::vector<std::size_t> columns(rows.front().size());
    for (Row const& row : rows)
        for (std::size_t index = 0; index < columns.size(); ++index)
            columns[index] = std::max(columns[index], columnsOf(row[index]));
    for (Row const& row : rows) {
        std::string line = padded(row.front(), columns.front());
        for (std::size_t index = 1; index < row.size(); ++index) {
            std::size_t const width = index < columns.size() ? columns[index] : 0;
            line += "  " + std::string(width - std::min(width, columnsOf(row[index])), ' ') + row[index];
        }
        m_out << line << '\n';
    }
    m_out << '\n';
}

void MoDiffAuditConsole::showMore(std::size_t all, char const* what) {
    if (all > m_most)
        m_out << kIndent << "and " << countWords(all - m_most, what) << " more; --most shows them\n\n";
}

void MoDiffAuditConsole::show(MoDiffAudit const& audit) {
    showFormats(audit);
    showAmounts("folder", audit.folders());
    showAmounts("pattern", audit.patterns());
    showDifferences(audit.differences());
    showRests(audit.rests());
    for (MoDiffAudit::Omission const& omission : audit.omissions())
        m_out << "left out   " << escaped(omission.id) << "  " << escaped(omission.reason) << '\n';
    std::size_t pairs = 0;
    for (auto const& [name, amount] : audit.formats())
        pairs += amount.pairs;
    m_out << countWords(pairs, "pair") << ", " << audit.differences().size()
          << " passed although what is hidden differs\n";
}

void MoDiffAuditConsole::showFormats(MoDiffAudit const& audit) {
    std::vector<Row> rows = {{"format", "pairs", "bytes", "hidden", "%", "differ"}};
    for (auto const& [name, amount] : audit.formats()) {
        Row row = {escaped(name)};
        MoDiffFormatRow const* const format = MoDiffFormatTable::find(name);
        bool const isKnown = !format || format->comparison != MoDiffFormatRow::eScript;
        for (std::string const& cell : amountCells(amount))
            row.push_back(isKnown || row.size() < 3 ? cell : "-");
        row.push_back(std::string("compared as ") + (format ? MoDiffFormatTable::comparisonWords(*format) : "?"));
        rows.push_back(row);
    }
    showTable(rows);
}

void MoDiffAuditConsole::showAmounts(char const* title, MoDiffAudit::Amounts const& amounts) {
    std::vector<NamedAmount> sorted(amounts.begin(), amounts.end());
    std::stable_sort(sorted.begin(), sorted.end(), [](NamedAmount const& left, NamedAmount const& right) {
        return left.second.hidden > right.second.hidden;
    });
    if (sorted.empty())
        return;
    std::vector<Row> rows = {{title, "pairs", "bytes", "hidden", "%", "differ"}};
    for (std::size_t index = 0; index < std::min(sorted.size(), m_most); ++index) {
        rows.push_back({escaped(sorted[index].first)});
        Row const cells = amountCells(sorted[index].second);
        rows.back().insert(rows.back().end(), cells.begin(), cells.end());
    }
    showTable(rows);
    showMore(sorted.size(), title);
}

void MoDiffAuditConsole::showDifferences(std::vector<MoDiffAudit::Difference> const& differences) {
    for (std::size_t index = 0; index < std::min(differences.size(), m_most); ++index) {
        MoDiffAudit::Difference const& difference = differences[index];
        m_out << "differs    " << escaped(difference.id) << "  " << countWords(difference.bytes, "hidden byte")
              << " in " << countWords(difference.gaps + difference.returns, "place") << '\n';
        for (MoDiffAudit::Place const& place : difference.places)
            showPlace(difference.files, place);
        if (difference.gaps > difference.places.size())
            m_out << kIndent << "and " << countWords(difference.gaps - difference.places.size(), "shorter place")
                  << '\n';
        if (difference.returns > 0)
            m_out << kIndent << "CarriageReturn alone: " << countWords(difference.returns, "place") << '\n';
        m_out << '\n';
    }
    showMore(differences.size(), "pair");
}

/// Both excerpts one below the other, so that they part in the same column.
void MoDiffAuditConsole::showPlace(MoDiffBothSides<std::string> const& files, MoDiffAudit::Place const& place) {
    MoDiffShownText::Excerpts const& excerpts = place.excerpts;
    MoDiffBothSides<std::string> const names = {placeWords(shortened(files.master), place.first.master),
                                                placeWords(shortened(files.actual), place.first.actual)};
    std::size_t const columns = std::max(columnsOf(names.master), columnsOf(names.actual)) + 2;
    std::size_t const before = std::max(excerpts.master.columnsBefore, excerpts.actual.columnsBefore);
    m_out << kIndent << place.patterns << ": " << place.bytes.master << " and "
          << countWords(place.bytes.actual, "byte") << '\n';
    auto const line = [&](std::string const& name, MoDiffShownText::Excerpt const& excerpt) {
        m_out << kIndent << "  " << padded(name, columns) << std::string(before - excerpt.columnsBefore, ' ')
              << excerpt.before << excerpt.after << '\n';
    };
    line(names.master, excerpts.master);
    line(names.actual, excerpts.actual);
}

void MoDiffAuditConsole::showRests(std::vector<MoDiffAudit::Rest> const& rests) {
    for (std::size_t index = 0; index < std::min(rests.size(), m_most); ++index) {
        MoDiffAudit::Rest const& rest = rests[index];
        m_out << "rest       " << placeWords(shortened(rest.file), rest.place) << "  " << rest.pattern << " hides "
              << rest.bytes << " of " << countWords(rest.fileBytes, "byte")
              << (rest.isAtEnd ? ", to the end of the file" : "") << '\n';
    }
    if (!rests.empty())
        m_out << '\n';
    showMore(rests.size(), "rest");
}

void MoDiffAuditConsole::show(MoDiffMutations::Outcomes const& outcomes) {
    std::vector<Row> rows = {{"format", "changed", "noticed", "%"}};
    std::vector<Row> hidden = {{"hidden by", "changed", "%"}};
    for (auto const& [name, outcome] : outcomes) {
        std::size_t const measured = outcome.made - outcome.unmeasured;
        rows.push_back({escaped(name), std::to_string(measured), std::to_string(outcome.noticed),
                        percentWords(static_cast<double>(outcome.noticed), static_cast<double>(measured))});
        if (outcome.unmeasured > 0)
            rows.back().push_back(std::to_string(outcome.unmeasured) +
                                  " more of masters of which even an unchanged copy does not pass");
        for (auto const& [pattern, count] : outcome.unnoticed)
            hidden.push_back({escaped(name) + "  " + pattern, std::to_string(count),
                              percentWords(static_cast<double>(count), static_cast<double>(measured))});
    }
    m_out << "\nOne byte of a master changed, the copy compared with it:\n";
    showTable(rows);
    if (hidden.size() > 1)
        showTable(hidden);
}

void MoDiffAuditConsole::showChanged(std::vector<std::string> const& ids) {
    for (std::string const& id : ids)
        m_out << "left out   " << escaped(id) << "  the master changed since the run\n";
}
