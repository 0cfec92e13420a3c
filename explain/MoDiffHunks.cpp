#include "MoDiffHunks.h"

#include <algorithm>

namespace {

std::size_t const kMostLinesToAlign = 4;

/// What places on one side depend on.
struct Side {
    MoDiffSourceText const& source;
    MoDiffRange range; ///< of the text

    bool beginsLine() const {
        return range.begin == 0 ||
               source.toFile(range.begin - 1) < MoDiffLines::begin(source.file(), source.toFile(range.begin));
    }
    /// Not for an empty range.
    bool endsLine() const {
        return source.toFile(range.end) >= MoDiffLines::end(source.file(), source.toFile(range.end - 1));
    }

    /// Whether nothing stands here where the other side has whole lines.
    bool isBetweenLines(Side const& other) const {
        return range.isEmpty() && beginsLine() && other.beginsLine() && other.endsLine();
    }

    MoDiffRange inFile(Side const& other) const {
        std::size_t const begin = source.toFile(range.begin);
        if (!range.isEmpty())
            return {begin, source.toFile(range.end - 1) + 1};
        if (isBetweenLines(other)) {
            std::size_t const line = MoDiffLines::begin(source.file(), begin);
            return {line, line};
        }
        if (range.begin == 0 || other.beginsLine())
            return {begin, begin};
        std::size_t const behind = source.toFile(range.begin - 1) + 1;
        return {behind, behind};
    }

    MoDiffRange lines(MoDiffRange file, Side const& other) const {
        std::size_t const begin = MoDiffLines::begin(source.file(), file.begin);
        if (isBetweenLines(other))
            return {begin, begin};
        return {begin, MoDiffLines::end(source.file(), file.isEmpty() ? file.begin : file.end - 1)};
    }
};

/// Numbers of lines through a file.
class LineCounter {
public:
    explicit LineCounter(std::string_view file) : m_file(file) {}
    /// @param begin of a line; must not decrease
    std::size_t at(std::size_t begin) {
        m_line += MoDiffLines::count(m_file, {m_begin, begin});
        m_begin = begin;
        return m_line;
    }

private:
    std::string_view m_file;
    std::size_t m_begin = 0;
    std::size_t m_line = 1;
};

/// One side of a segment while it is grown to lines that hold the same on both sides.
struct Edge {
    MoDiffSourceText const& source;
    std::size_t change; ///< where in the text the change next to the edge begins or ends
    std::size_t line;   ///< in the file

    /// How much of the text stands between the change and the edge.
    std::size_t distance() const {
        std::size_t const index = source.toText(line);
        return index > change ? index - change : change - index;
    }
    void grow(bool ahead) {
        line = ahead ? MoDiffLines::end(source.file(), line) : MoDiffLines::begin(source.file(), line - (line != 0));
    }
};

/// Files may break the same text into lines in different ways: takes lines more on one side until the edges of both
/// hold the same, unless that takes many.
void align(Edge master, Edge actual, bool ahead, std::size_t& masterLine, std::size_t& actualLine) {
    for (std::size_t lines = 0; lines <= kMostLinesToAlign; ++lines) {
        std::size_t const inMaster = master.distance();
        std::size_t const inActual = actual.distance();
        if (inMaster == inActual) {
            masterLine = master.line;
            actualLine = actual.line;
            return;
        }
        (inMaster < inActual ? master : actual).grow(ahead);
    }
}

/// Takes changes one by one.
class SegmentBuilder {
public:
    SegmentBuilder(MoDiffBothSides<MoDiffSourceText> const& sources, std::vector<MoDiffPlacedChange> const& changes)
        : m_sources(sources), m_changes(changes) {}

    std::vector<MoDiffSegment> build() {
        m_segments.reserve(m_changes.size()); // growing would hold them twice
        for (std::size_t index = 0; index < m_changes.size(); ++index)
            add(index);
        LineCounter master(m_sources.master.file());
        LineCounter actual(m_sources.actual.file());
        for (MoDiffSegment& segment : m_segments)
            segment.firstLine = {master.at(segment.lines.master.begin), actual.at(segment.lines.actual.begin)};
        return std::move(m_segments);
    }

private:
    void add(std::size_t index) {
        MoDiffPlacedChange const& placed = m_changes[index];
        auto const& ranges = placed.change.ranges;
        Side const master = {m_sources.master, ranges.master};
        Side const actual = {m_sources.actual, ranges.actual};
        MoDiffBothSides<MoDiffRange> lines = {master.lines(placed.file.master, actual),
                                              actual.lines(placed.file.actual, master)};
        if (index == 0 || endsBefore(m_changes[index - 1], lines))
            align({m_sources.master, ranges.master.begin, lines.master.begin},
                  {m_sources.actual, ranges.actual.begin, lines.actual.begin}, /*ahead=*/false, lines.master.begin,
                  lines.actual.begin);
        if (index + 1 == m_changes.size() || beginsBehind(m_changes[index + 1], lines))
            align({m_sources.master, ranges.master.end, lines.master.end},
                  {m_sources.actual, ranges.actual.end, lines.actual.end}, /*ahead=*/true, lines.master.end,
                  lines.actual.end);
        m_segments.push_back({index, index + 1, lines, {}});
        while (m_segments.size() > 1 && joinsLast())
            ;
    }

    /// Makes one of the last two segments when nothing stands between them on one of the sides.
    bool joinsLast() {
        MoDiffSegment const last = m_segments.back();
        MoDiffSegment& earlier = m_segments[m_segments.size() - 2];
        if (last.lines.master.begin > earlier.lines.master.end && last.lines.actual.begin > earlier.lines.actual.end)
            return false;
        earlier.endChange = last.endChange;
        earlier.lines = {hull(earlier.lines.master, last.lines.master),
                         hull(earlier.lines.actual, last.lines.actual)};
        m_segments.pop_back();
        return true;
    }

    static bool endsBefore(MoDiffPlacedChange const& earlier, MoDiffBothSides<MoDiffRange> const& lines) {
        return earlier.file.master.end <= lines.master.begin && earlier.file.actual.end <= lines.actual.begin;
    }
    static bool beginsBehind(MoDiffPlacedChange const& later, MoDiffBothSides<MoDiffRange> const& lines) {
        return later.file.master.begin >= lines.master.end && later.file.actual.begin >= lines.actual.end;
    }

    static MoDiffRange hull(MoDiffRange first, MoDiffRange second) {
        return {std::min(first.begin, second.begin), std::max(first.end, second.end)};
    }

    MoDiffBothSides<MoDiffSourceText> const& m_sources;
    std::vector<MoDiffPlacedChange> const& m_changes;
    std::vector<MoDiffSegment> m_segments;
};

/// The last lines of a part that ends at a line's begin, or its first ones.
MoDiffRange lastLines(std::string_view file, MoDiffRange part, std::size_t lines) {
    std::size_t begin = part.end;
    for (; lines != 0 && begin > part.begin; --lines)
        begin = std::max(part.begin, MoDiffLines::begin(file, begin - 1));
    return {begin, part.end};
}

MoDiffRange firstLines(std::string_view file, MoDiffRange part, std::size_t lines) {
    std::size_t end = part.begin;
    for (; lines != 0 && end < part.end; --lines)
        end = std::min(part.end, MoDiffLines::end(file, end));
    return {part.begin, end};
}

/// One side of a hunk's surroundings.
struct Surroundings {
    std::string_view file;
    MoDiffRange before; ///< from the hunk before to this one
    MoDiffRange after;

    void take(std::size_t lines, MoDiffRange& hunkBefore, MoDiffRange& hunkAfter) const {
        hunkBefore = lastLines(file, before, lines);
        hunkAfter = firstLines(file, after, lines);
    }
};

bool isNear(std::string_view file, MoDiffRange const& earlier, MoDiffRange const& later, std::size_t lines) {
    MoDiffRange const between = {earlier.end, later.begin};
    return firstLines(file, between, lines).end == between.end;
}

} // namespace

std::vector<MoDiffPlacedChange> MoDiffHunks::place(MoDiffBothSides<MoDiffSourceText> const& sources,
                                                   std::vector<MoDiffChange> const& changes) {
    std::vector<MoDiffPlacedChange> placed;
    placed.reserve(changes.size());
    MoDiffPlaceCounter masterPlaces(sources.master.file());
    MoDiffPlaceCounter actualPlaces(sources.actual.file());
    for (MoDiffChange const& change : changes) {
        Side const master = {sources.master, change.ranges.master};
        Side const actual = {sources.actual, change.ranges.actual};
        MoDiffRange const ofMaster = master.inFile(actual);
        MoDiffRange const ofActual = actual.inFile(master);
        placed.push_back(
            {change, {ofMaster, ofActual}, {masterPlaces.at(ofMaster.begin), actualPlaces.at(ofActual.begin)}});
    }
    return placed;
}

std::vector<MoDiffHunk> MoDiffHunks::find(MoDiffBothSides<MoDiffSourceText> const& sources,
                                          std::vector<MoDiffPlacedChange> const& changes, std::size_t contextLines) {
    std::string_view const master = sources.master.file();
    std::string_view const actual = sources.actual.file();
    std::vector<MoDiffSegment> const segments = SegmentBuilder(sources, changes).build();
    std::vector<MoDiffHunk> hunks;
    hunks.reserve(segments.size());
    for (MoDiffSegment const& segment : segments) {
        MoDiffSegment const* const last = hunks.empty() ? nullptr : &hunks.back().segments.back();
        if (!last || !isNear(master, last->lines.master, segment.lines.master, 2 * contextLines) ||
            !isNear(actual, last->lines.actual, segment.lines.actual, 2 * contextLines))
            hunks.emplace_back();
        hunks.back().segments.push_back(segment);
    }
    MoDiffBothSides<std::size_t> end = {0, 0};
    for (std::size_t index = 0; index < hunks.size(); ++index) {
        MoDiffHunk& hunk = hunks[index];
        auto const& first = hunk.segments.front().lines;
        auto const& last = hunk.segments.back().lines;
        bool const isLast = index + 1 == hunks.size();
        MoDiffBothSides<std::size_t> const next = {
            isLast ? master.size() : hunks[index + 1].segments.front().lines.master.begin,
            isLast ? actual.size() : hunks[index + 1].segments.front().lines.actual.begin};
        Surroundings{master, {end.master, first.master.begin}, {last.master.end, next.master}}.take(
            contextLines, hunk.before.master, hunk.after.master);
        Surroundings{actual, {end.actual, first.actual.begin}, {last.actual.end, next.actual}}.take(
            contextLines, hunk.before.actual, hunk.after.actual);
        end = {hunk.after.master.end, hunk.after.actual.end};
    }
    return hunks;
}
