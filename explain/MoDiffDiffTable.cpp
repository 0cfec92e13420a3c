#include "MoDiffDiffTable.h"

#include "MoDiffHexText.h"
#include "MoDiffHtml.h"
#include "MoDiffScriptTable.h"

#include <algorithm>

namespace {

std::size_t const kMostLines = 400; // of a side in a row
std::size_t const kFoldedFrom = 60; // rows of a hunk that are seen at once
std::size_t const kMostHexRows = 200;

char const kHead[] = "<thead><tr><th scope=\"col\" colspan=\"2\">Master</th><th scope=\"col\" colspan=\"2\">Actual"
                     "</th></tr></thead>\n";

using Rows = std::vector<std::string>;

std::string cells(std::vector<MoDiffHunkLines::Line> const& lines, std::size_t index, char const* touched) {
    if (index >= lines.size())
        return "<th></th><td class=\"none\"></td>";
    MoDiffHunkLines::Line const& line = lines[index];
    std::string const number = line.number == 0 ? "" : std::to_string(line.number);
    return std::string(number.empty() ? "<th>" : "<th scope=\"row\">") + number + "</th><td" +
           (line.isTouched ? touched : "") + ">" + MoDiffHtml::line(line.spans) + "</td>";
}

void addRows(MoDiffHunkLines::Block const& block, Rows& rows) {
    for (std::size_t index = 0; index < std::max(block.master.size(), block.actual.size()); ++index)
        rows.push_back("<tr>" + cells(block.master, index, " class=\"old\"") +
                       cells(block.actual, index, " class=\"new\"") + "</tr>\n");
}

std::string wordsOf(char const* side, MoDiffHunkLines::Place const& place) {
    using MoDiffHtml::number;
    if (place.record)
        return std::string(side) + " record " + number(place.record->record) + ", field " +
               number(place.record->field);
    return std::string(side) + " line " + number(place.text.line) + ", column " + number(place.text.column);
}

std::string table(std::string const& caption, Rows const& rows, std::size_t begin, std::size_t end) {
    std::string html = "<table class=\"diff\"><caption>" + caption +
                       "</caption><colgroup><col class=\"number\"><col><col class=\"number\"><col></colgroup>" +
                       kHead + "<tbody>\n";
    for (std::size_t index = begin; index < end; ++index)
        html += rows[index];
    return html + "</tbody></table>\n";
}

} // namespace

MoDiffDiffTable::MoDiffDiffTable(MoDiffPairExplanation const& explanation, std::size_t room)
    : m_explanation(explanation), m_room(room), m_lines(explanation, kMostLines) {
}

std::string MoDiffDiffTable::toHtml() {
    switch (m_explanation.view()) {
    case MoDiffPairExplanation::eScript:
        return MoDiffScriptTable::toHtml(m_explanation.output());
    case MoDiffPairExplanation::eBytes:
        return bytes();
    default:
        return hunks();
    }
}

std::string MoDiffDiffTable::hunks() {
    auto const& hunks = m_explanation.hunks();
    if (hunks.empty())
        return "<p class=\"empty\">The files do not differ in what is compared.</p>\n";
    std::string html;
    for (; m_places < hunks.size(); ++m_places) {
        std::string const next = hunk(hunks[m_places]);
        if (html.size() + next.size() > m_room && m_places > 0)
            break;
        html += next;
    }
    if (m_places < hunks.size())
        html += "<p class=\"cut\">" + MoDiffHtml::count(hunks.size() - m_places, "more place") +
                " would make this page too large; <code>modiff show</code> shows them.</p>\n";
    return html;
}

std::string MoDiffDiffTable::hunk(MoDiffHunk const& hunk) {
    Rows rows;
    for (MoDiffHunkLines::Block const& block : m_lines.of(hunk))
        addRows(block, rows);
    std::size_t room = m_room;
    auto const fits = [&room](std::string const& row) { return (room -= std::min(room, row.size())) > 0; };
    auto const cut = static_cast<std::size_t>(std::find_if_not(rows.begin(), rows.end(), fits) - rows.begin());
    std::size_t const end = std::max<std::size_t>(cut, 1);
    std::size_t const seen = std::min(end, kFoldedFrom);
    MoDiffBothSides<MoDiffHunkLines::Place> const places = m_lines.placeOf(hunk);
    std::string const place = wordsOf("Master", places.master) + " · " + wordsOf("actual", places.actual);
    std::string html = "<section class=\"place\" tabindex=\"-1\"><h3>" + place + "</h3>\n" +
                       table("Lines around " + place, rows, 0, seen);
    if (seen < end)
        html += "<details class=\"more\"><summary>" + MoDiffHtml::count(end - seen, "more row") + "</summary>\n" +
                table("More lines around " + place, rows, seen, end) + "</details>\n";
    if (end < rows.size())
        html += "<p class=\"cut\">" + MoDiffHtml::count(rows.size() - end, "more row") +
                " would make this page too large; <code>modiff show</code> shows them.</p>\n";
    return html + "</section>\n";
}

std::string MoDiffDiffTable::bytes() const {
    std::string html = "<pre class=\"hex\" tabindex=\"0\" aria-label=\"Bytes that differ, by their offset\">";
    MoDiffBothSides<std::string_view> const files = {m_explanation.sources().master.file(),
                                                     m_explanation.sources().actual.file()};
    MoDiffHexText::write(files, m_explanation.changes(), kMostHexRows,
                         [&html](MoDiffStyledLine const& line) { html += MoDiffHtml::line(line) + "\n"; });
    return html + "</pre>\n";
}
