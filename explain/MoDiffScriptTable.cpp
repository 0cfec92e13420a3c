#include "MoDiffScriptTable.h"

#include "MoDiffHtml.h"

#include <algorithm>
#include <string_view>

namespace {

std::string_view const kSheet = "sheet \"";
std::string_view const kMaster = ": master ";
std::string_view const kActual = ", actual ";

/// `sheet "Plan", cell B11, value: master number 56, actual number 0`
struct Cell {
    std::string_view sheet, place, what, master, actual;
};

/// The only place of a word in a text; npos when it stands there twice and nobody can tell which one parts it.
std::size_t onlyPlace(std::string_view text, std::string_view word) {
    std::size_t const first = text.find(word);
    return first == text.rfind(word) ? first : std::string_view::npos;
}

bool parse(std::string_view line, Cell& cell) {
    std::size_t const sheetEnd = line.find("\", ", kSheet.size());
    if (line.substr(0, kSheet.size()) != kSheet || sheetEnd == std::string_view::npos)
        return false;
    std::string_view const rest = line.substr(sheetEnd + 3);
    std::size_t const comma = rest.find(", ");
    std::size_t const master = onlyPlace(rest, kMaster);
    std::size_t const actual = onlyPlace(rest, kActual);
    if (comma == std::string_view::npos || master == std::string_view::npos || actual == std::string_view::npos ||
        comma > master || master + kMaster.size() > actual)
        return false;
    cell = {line.substr(kSheet.size(), sheetEnd - kSheet.size()), rest.substr(0, comma),
            rest.substr(comma + 2, master - comma - 2),
            rest.substr(master + kMaster.size(), actual - master - kMaster.size()),
            rest.substr(actual + kActual.size())};
    return true;
}

std::string rowOf(Cell const& cell) {
    auto const column = [](std::string_view text, char const* kind) {
        return std::string("<td") + kind + ">" + MoDiffHtml::words(text) + "</td>";
    };
    return "<tr>" + column(cell.sheet, "") + "<th scope=\"row\">" + MoDiffHtml::words(cell.place) + "</th>" +
           column(cell.what, "") + column(cell.master, " class=\"old\"") + column(cell.actual, " class=\"new\"") +
           "</tr>\n";
}

std::string lineOf(std::string_view line) {
    char const first = line.empty() ? ' ' : line.front();
    std::string text = MoDiffHtml::words(line) + "\n";
    if (first != '-' && first != '+')
        return text;
    return (first == '-' ? "<span class=\"old\">" : "<span class=\"new\">") + text + "</span>";
}

} // namespace

std::string MoDiffScriptTable::toHtml(std::string const& output) {
    std::string rows;
    std::string lines;
    for (std::string_view rest = output; !rest.empty();) {
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        line = line.substr(0, line.find_last_not_of('\r') + 1);
        Cell cell;
        if (parse(line, cell))
            rows += rowOf(cell);
        else
            lines += lineOf(line);
    }
    std::string html;
    if (!rows.empty())
        html = "<table class=\"cells\"><caption>Cells that differ</caption><thead><tr><th scope=\"col\">Sheet</th>"
               "<th scope=\"col\">Cell</th><th scope=\"col\">What</th><th scope=\"col\">Master</th>"
               "<th scope=\"col\">Actual</th></tr></thead>\n<tbody>\n" +
               rows + "</tbody></table>\n";
    if (!lines.empty())
        html += "<pre class=\"words\" tabindex=\"0\" aria-label=\"What the script tells\">" + lines + "</pre>\n";
    return html;
}
