#include "MoDiffLineText.h"

#include "MoDiffShownText.h"
#include "MoUtf8.h"

#include <algorithm>

namespace {

std::size_t const kLongLine = 320;  // bytes; a longer line is cut
std::size_t const kAround = 80;     // bytes before and behind a change in a line that is cut
std::size_t const kLongMark = 400;  // bytes; of a longer change only begin and end are shown
std::size_t const kLongHidden = 40; // bytes; a longer stretch is named instead
std::size_t const kMostWindows = 12;

bool cutsCharacter(std::string_view text, std::size_t at) {
    return at < text.size() && MoUtf8::isContinuation(static_cast<unsigned char>(text[at]));
}

/// The part, begun and ended so that no character is cut.
MoDiffRange onCharacters(std::string_view text, MoDiffRange part) {
    for (unsigned back = 0; back < 3 && part.begin > 0 && cutsCharacter(text, part.begin); ++back)
        --part.begin;
    for (unsigned ahead = 0; ahead < 3 && cutsCharacter(text, part.end); ++ahead)
        ++part.end;
    return part;
}

MoDiffRange within(MoDiffRange line, std::size_t begin, std::size_t end) {
    return {std::max(line.begin, begin - std::min(begin, kAround)), std::min(line.end, end + kAround)};
}

/// What of a line is shown, in order, touching ones joined.
std::vector<MoDiffRange> windowsOf(std::string_view text, MoDiffRange line, std::vector<MoDiffRange> const& marks) {
    if (line.size() <= kLongLine)
        return {line};
    std::vector<MoDiffRange> windows;
    auto const add = [&](MoDiffRange window) {
        window = onCharacters(text, window);
        if (!windows.empty() && window.begin <= windows.back().end)
            windows.back().end = std::max(windows.back().end, window.end);
        else
            windows.push_back(window);
    };
    for (MoDiffRange const& mark : marks) {
        MoDiffRange const part = {std::max(mark.begin, line.begin), std::min(mark.end, line.end)};
        if (part.size() <= kLongMark) {
            add(within(line, part.begin, part.end));
        } else {
            add(within(line, part.begin, part.begin + kAround));
            add(within(line, part.end - kAround, part.end));
        }
    }
    if (windows.empty())
        add({line.begin, line.begin + 2 * kAround});
    return windows;
}

std::string countOf(std::size_t bytes) {
    return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
}

/// A line without its line end, unless that is what changes: of a line that is marked as a whole it tells nothing.
MoDiffRange shownPart(std::string_view text, MoDiffRange line, std::vector<MoDiffRange> const& marks) {
    if (line.isEmpty() || text[line.end - 1] != '\n')
        return line;
    for (MoDiffRange const& mark : marks)
        if (mark.begin > line.begin && mark.begin < line.end && mark.end >= line.end)
            return line;
    bool const hasReturn = line.size() > 1 && text[line.end - 2] == '\r';
    return {line.begin, line.end - (hasReturn ? 2 : 1)};
}

} // namespace

MoDiffStyledLine MoDiffLineText::spans(MoDiffRange line, std::vector<MoDiffRange> const& marks) const {
    MoDiffRange const part = shownPart(m_source.file(), line, marks);
    std::vector<MoDiffRange> const windows = windowsOf(m_source.file(), part, marks);
    MoDiffStyledLine result;
    std::size_t at = part.begin;
    for (std::size_t index = 0; index < std::min(windows.size(), kMostWindows); ++index) {
        if (windows[index].begin > at)
            result.push_back({MoDiffStyle::eNote, "[" + countOf(windows[index].begin - at) + "]"});
        showWindow(windows[index], marks, result);
        at = windows[index].end;
    }
    if (at < part.end)
        result.push_back({MoDiffStyle::eNote, "[" + countOf(part.end - at) +
                                                  (windows.size() > kMostWindows ? " with more changes]" : "]")});
    auto const isPlain = [this](MoDiffSpan const& span) { return span.style == m_styles.plain; };
    if (std::none_of(result.begin(), result.end(), isPlain)) // a mark that holds everything tells nothing
        for (MoDiffSpan& span : result)
            span.style = span.style == m_styles.mark ? m_styles.plain : span.style;
    return result;
}

void MoDiffLineText::showWindow(MoDiffRange window, std::vector<MoDiffRange> const& marks,
                                MoDiffStyledLine& line) const {
    while (!window.isEmpty()) {
        Piece const piece = pieceAt(window.begin, window, marks);
        line.push_back(shown(piece));
        window.begin = piece.range.end;
    }
}

MoDiffLineText::Piece MoDiffLineText::pieceAt(std::size_t at, MoDiffRange window,
                                              std::vector<MoDiffRange> const& marks) const {
    Piece piece = {{at, window.end}, m_styles.plain};
    auto const hidden = m_source.hidden().firstBehind(at);
    if (hidden != m_source.hidden().end()) {
        if (hidden->begin <= at)
            return {{at, std::min(window.end, hidden->end())}, MoDiffStyle::eHidden};
        piece.range.end = std::min(piece.range.end, hidden->begin);
    }
    auto const mark = std::find_if(marks.begin(), marks.end(), [at](MoDiffRange const& candidate) {
        return candidate.end > at && !candidate.isEmpty();
    });
    if (mark == marks.end())
        return piece;
    bool const isMarked = mark->begin <= at;
    piece.range.end = std::min(piece.range.end, isMarked ? mark->end : mark->begin);
    piece.style = isMarked ? m_styles.mark : m_styles.plain;
    return piece;
}

MoDiffSpan MoDiffLineText::shown(Piece const& piece) const {
    std::string_view const bytes = piece.range.of(m_source.file());
    if (piece.style != MoDiffStyle::eHidden || bytes.size() <= kLongHidden)
        return {piece.style, MoDiffShownText::escaped(bytes)};
    auto const hidden = m_source.hidden().firstBehind(piece.range.begin);
    std::string const name = std::string("[") + m_source.nameOf(*hidden) + ": " + countOf(bytes.size()) + "]";
    return {piece.style, name, MoDiffShownText::escaped(bytes)};
}
