#include "MoDiffRenderedLook.h"

#include "MoDiffBase64.h"
#include "MoDiffHtml.h"
#include "MoDiffMimeText.h"
#include "MoDiffProgramOutput.h"
#include "MoDiffTextEncoding.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <strings.h>

namespace {

std::size_t const kMostPictures = 3; // pages of a document

using MoDiffTextEncoding::Beginning;

enum class Look { eMarkup, eArchive, eDocument };

/// The formats that have a look.
struct LookRow {
    char const* format;
    Look look;
};

LookRow const kLooks[] = {
    {"html", Look::eMarkup}, {"xhtml", Look::eMarkup}, {"xls", Look::eMarkup},   {"singlexls", Look::eMarkup},
    {"mht", Look::eArchive}, {"xlwa", Look::eArchive}, {"pdf", Look::eDocument},
};

/// The frame's own policy, although the page's holds for it as well, and what shows the first change where a browser
/// can begin there. Part of an attribute.
char const kFrameHead[] =
    "<!DOCTYPE html><meta http-equiv='Content-Security-Policy' content=&quot;default-src 'none'; "
    "style-src 'unsafe-inline'; img-src data:&quot;><meta name=color-scheme content=light>"
    "<style>mark{background:#ffd54a;color:#000;scroll-initial-target:nearest}</style>";

/// Whether a part of a text is read by whoever looks at the page: it stands between tags, and in no element whose
/// text is not shown as such.
bool isReadable(std::string_view file, MoDiffRange part) {
    if (part.isEmpty() || part.of(file).find_first_of("<>") != std::string_view::npos || part.begin == 0)
        return false;
    std::size_t const bound = file.find_last_of("<>", part.begin - 1);
    if (bound == std::string_view::npos || file[bound] == '<')
        return false;
    std::string_view const tag = file.substr(std::min(file.rfind('<', bound), bound));
    for (char const* const name : {"<script", "<style", "<title", "<textarea", "<select", "<option"}) {
        std::string_view const start(name);
        if (tag.size() >= start.size() && strncasecmp(tag.data(), name, start.size()) == 0)
            return false;
    }
    return true;
}

/// The file with what changed in its text marked.
Beginning marked(std::string_view file, std::vector<MoDiffPlacedChange> const& changes,
                 MoDiffRange MoDiffBothSides<MoDiffRange>::*side, std::size_t room) {
    Beginning text(file, room);
    std::size_t at = 0;
    for (MoDiffPlacedChange const& change : changes) {
        MoDiffRange const part = change.file.*side;
        if (part.begin < at || !isReadable(file, part))
            continue;
        for (std::string_view const piece : {file.substr(at, part.begin - at), std::string_view("<mark>"),
                                             part.of(file), std::string_view("</mark>")})
            text.append(piece);
        at = part.end;
    }
    text.append(file.substr(at));
    return text;
}

std::string figure(std::string const& side, std::string const& content) {
    return "<figure><figcaption>" + side + "</figcaption>" + content + "</figure>\n";
}

std::string frame(std::string const& side, Beginning const& text, std::size_t room) {
    std::string html = "<iframe sandbox=\"\" loading=\"lazy\" title=\"Look of the " + side + "\" srcdoc=\"" +
                       kFrameHead + MoDiffHtml::sourceDocument(std::string_view(text.text()).substr(0, room)) +
                       "\"></iframe>";
    if (room < text.size())
        html += "<p class=\"cut\">The first " + MoDiffHtml::number(room / 1024) + " of " +
                MoDiffHtml::number(text.size() / 1024) + " kB.</p>";
    return figure(side, html);
}

/// The pages that a script names, "page 3: ..."; the first one when it names none.
std::set<std::size_t> namedPages(std::string const& output) {
    std::string const word = "page ";
    std::set<std::size_t> pages;
    for (std::size_t at = 0; at < output.size(); at = std::min(output.find('\n', at), output.size() - 1) + 1)
        if (output.compare(at, word.size(), word) == 0)
            pages.insert(std::strtoul(output.c_str() + at + word.size(), nullptr, 10));
    pages.erase(0);
    return pages.empty() ? std::set<std::size_t>{1} : pages;
}

std::string picture(std::string const& side, std::string const& file, std::size_t page, std::size_t& room) {
    std::string const number = std::to_string(page);
    std::string const name = file.front() == '-' ? "./" + file : file;
    MoDiffProgramOutput const drawn = MoDiffProgramOutput::of(
        {"timeout", "20", "pdftoppm", "-jpeg", "-scale-to", "900", "-f", number, "-l", number, "-singlefile", name});
    std::string const image = drawn.isGood ? MoDiffBase64::encode(drawn.bytes) : "";
    if (image.empty() || image.size() > room)
        return figure(side, "<p class=\"cut\">Page " + number +
                                (image.empty() ? " cannot be drawn.</p>" : " would make this page too large.</p>"));
    room -= image.size();
    return figure(side, "<img alt=\"Page " + number + " of the " + side + "\" src=\"data:image/jpeg;base64," + image +
                            "\">");
}

} // namespace

std::string MoDiffRenderedLook::toHtml() const {
    for (LookRow const& row : kLooks) {
        if (row.format != m_pair.format)
            continue;
        std::string const figures = row.look == Look::eDocument ? pictures() : frames(row.look == Look::eArchive);
        return figures.empty()
                   ? ""
                   : (row.look == Look::eDocument ? "<div class=\"look\">\n" : "<div class=\"look frames\">\n") +
                         figures + "</div>\n";
    }
    return "";
}

std::string MoDiffRenderedLook::frames(bool isArchive) const {
    if (m_explanation.view() != MoDiffPairExplanation::eText)
        return "";
    std::size_t const room = m_room / 2;
    auto const textOf = [&](MoDiffSourceText const& source, auto side) {
        if (!isArchive)
            return marked(source.file(), m_explanation.changes(), side, room);
        std::string const html = MoDiffMimeText::firstHtml(source.file());
        Beginning text(html, room);
        text.append(html);
        return text;
    };
    auto const& sources = m_explanation.sources();
    return frame("master", textOf(sources.master, &MoDiffBothSides<MoDiffRange>::master), room) +
           frame("actual", textOf(sources.actual, &MoDiffBothSides<MoDiffRange>::actual), room);
}

std::string MoDiffRenderedLook::pictures() const {
    std::size_t room = m_room;
    std::size_t count = 0;
    std::string html;
    std::set<std::size_t> const pages = namedPages(m_pair.output);
    for (auto page = pages.begin(); page != pages.end() && count < kMostPictures; ++page, ++count)
        html += picture("master", m_pair.master, *page, room) + picture("actual", m_pair.actual, *page, room);
    if (count < pages.size())
        html += "<p class=\"cut\">" + MoDiffHtml::count(pages.size() - count, "more page") + " differ.</p>\n";
    return html;
}
