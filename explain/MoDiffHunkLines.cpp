#include "MoDiffHunkLines.h"

#include <algorithm>

using Line = MoDiffHunkLines::Line;

namespace {

std::size_t const kLongUnmarked = 7; // lines between changes that are folded, all but
std::size_t const kKeptUnmarked = 2; // these at either end

Line note(std::string const& text) {
    return {0, {{MoDiffStyle::eNote, text}}};
}

} // namespace

MoDiffHunkLines::Side::Side(MoDiffPairExplanation const& explanation, MoDiffSourceText const& source, Range range,
                            Number number, MoDiffLineText::Styles styles, std::size_t mostLines)
    : m_changes(explanation.changes()), m_source(source), m_range(range), m_number(number), m_changed(source, styles),
      m_context(source, {MoDiffStyle::eContext, MoDiffStyle::eContext}), m_mostLines(mostLines) {
}

std::vector<Line> MoDiffHunkLines::Side::context(MoDiffRange part, std::size_t number) const {
    std::vector<Line> lines;
    for (std::size_t at = part.begin; at < part.end; at = MoDiffLines::end(m_source.file(), at))
        lines.push_back({number++, m_context.spans({at, MoDiffLines::end(m_source.file(), at)}, {})});
    return lines;
}

std::vector<Line> MoDiffHunkLines::Side::before(MoDiffSegment const& segment, MoDiffRange part) const {
    return context(part, segment.firstLine.*m_number - MoDiffLines::count(m_source.file(), part));
}

std::vector<Line> MoDiffHunkLines::Side::behind(MoDiffSegment const& segment, MoDiffRange part) const {
    return context(part, segment.firstLine.*m_number + MoDiffLines::count(m_source.file(), segment.lines.*m_range));
}

std::vector<Line> MoDiffHunkLines::Side::changed(MoDiffSegment const& segment) const {
    MoDiffRange rest = segment.lines.*m_range;
    std::size_t number = segment.firstLine.*m_number;
    std::vector<Line> lines;
    while (!rest.isEmpty() && lines.size() < m_mostLines) {
        MoDiffRange const line = {rest.begin, MoDiffLines::end(m_source.file(), rest.begin)};
        MoDiffRange const unmarked = {rest.begin, firstMarkedLine(segment, rest)};
        if (MoDiffLines::count(m_source.file(), unmarked) > kLongUnmarked) {
            rest.begin = fold(unmarked, number, lines);
            continue;
        }
        std::vector<MoDiffRange> const lineMarks = marks(segment, line);
        lines.push_back({number++, m_changed.spans(line, lineMarks), !lineMarks.empty()});
        rest.begin = line.end;
    }
    if (std::size_t const more = MoDiffLines::count(m_source.file(), rest))
        lines.push_back(note(std::to_string(more) + (more == 1 ? " more line" : " more lines")));
    return lines;
}

/// The first change of a segment that ends behind a place; an empty one counts where it stands.
std::size_t MoDiffHunkLines::Side::firstChange(MoDiffSegment const& segment, std::size_t place) const {
    auto const begin = m_changes.begin() + static_cast<std::ptrdiff_t>(segment.firstChange);
    auto const end = m_changes.begin() + static_cast<std::ptrdiff_t>(segment.endChange);
    auto const found = std::partition_point(begin, end, [&](MoDiffPlacedChange const& change) {
        MoDiffRange const& range = change.file.*m_range;
        return range.end < place || (range.end == place && !range.isEmpty());
    });
    return static_cast<std::size_t>(found - m_changes.begin());
}

std::vector<MoDiffRange> MoDiffHunkLines::Side::marks(MoDiffSegment const& segment, MoDiffRange line) const {
    std::vector<MoDiffRange> result;
    for (std::size_t change = firstChange(segment, line.begin);
         change < segment.endChange && (mark(change).begin < line.end || line.end == m_source.file().size());
         ++change)
        result.push_back(mark(change));
    return result;
}

std::size_t MoDiffHunkLines::Side::firstMarkedLine(MoDiffSegment const& segment, MoDiffRange rest) const {
    std::size_t const change = firstChange(segment, rest.begin);
    if (change == segment.endChange || mark(change).begin >= rest.end)
        return rest.end;
    return std::max(rest.begin, MoDiffLines::begin(m_source.file(), mark(change).begin));
}

/// Shows begin and end of lines without changes; returns where what follows them begins.
std::size_t MoDiffHunkLines::Side::fold(MoDiffRange unmarked, std::size_t& number, std::vector<Line>& lines) const {
    std::string_view const file = m_source.file();
    MoDiffRange inner = unmarked;
    for (std::size_t kept = 0; kept < kKeptUnmarked; ++kept) {
        std::size_t const end = MoDiffLines::end(file, inner.begin);
        lines.push_back({number++, m_changed.spans({inner.begin, end}, {})});
        inner.begin = end;
        inner.end = MoDiffLines::begin(file, inner.end - 1);
    }
    std::size_t const folded = MoDiffLines::count(file, inner);
    lines.push_back(note(std::to_string(folded) + " lines without a change"));
    number += folded;
    return inner.end;
}

MoDiffHunkLines::MoDiffHunkLines(MoDiffPairExplanation const& explanation, std::size_t mostLines)
    : m_explanation(explanation),
      m_master(explanation, explanation.sources().master, &MoDiffBothSides<MoDiffRange>::master,
               &MoDiffBothSides<std::size_t>::master, {MoDiffStyle::eRemoved, MoDiffStyle::eRemovedMark}, mostLines),
      m_actual(explanation, explanation.sources().actual, &MoDiffBothSides<MoDiffRange>::actual,
               &MoDiffBothSides<std::size_t>::actual, {MoDiffStyle::eAdded, MoDiffStyle::eAddedMark}, mostLines),
      m_csv(explanation.separator()), m_masterRecords(explanation.sources().master.file(), m_csv),
      m_actualRecords(explanation.sources().actual.file(), m_csv) {
}

std::vector<MoDiffHunkLines::Block> MoDiffHunkLines::of(MoDiffHunk const& hunk) const {
    std::vector<Block> blocks;
    MoDiffBothSides<MoDiffRange> between = hunk.before;
    for (std::size_t index = 0; index < hunk.segments.size(); ++index) {
        MoDiffSegment const& segment = hunk.segments[index];
        if (index != 0) {
            auto const& last = hunk.segments[index - 1].lines;
            between = {{last.master.end, segment.lines.master.begin}, {last.actual.end, segment.lines.actual.begin}};
        }
        blocks.push_back({false, m_master.before(segment, between.master), m_actual.before(segment, between.actual)});
        blocks.push_back({true, m_master.changed(segment), m_actual.changed(segment)});
    }
    MoDiffSegment const& last = hunk.segments.back();
    blocks.push_back({false, m_master.behind(last, hunk.after.master), m_actual.behind(last, hunk.after.actual)});
    return blocks;
}

MoDiffBothSides<MoDiffHunkLines::Place> MoDiffHunkLines::placeOf(MoDiffHunk const& hunk) {
    MoDiffPlacedChange const& placed = m_explanation.changes()[hunk.segments.front().firstChange];
    MoDiffBothSides<Place> place = {{placed.place.master, std::nullopt}, {placed.place.actual, std::nullopt}};
    if (m_explanation.view() == MoDiffPairExplanation::eRecords) {
        place.master.record = m_masterRecords.at(placed.change.ranges.master.begin);
        place.actual.record = m_actualRecords.at(placed.change.ranges.actual.begin);
    }
    return place;
}
