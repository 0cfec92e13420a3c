#include "MoDiffHunks.h"

#include <algorithm>

namespace {

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

std::vector<MoDiffSegment> segmentsOf(MoDiffBothSides<MoDiffSourceText> const& sources,
                                      std::vector<MoDiffPlacedChange> const& changes) {
    std::vector<MoDiffSegment> segments;
    LineCounter masterLines(sources.master.file());
    LineCounter actualLines(sources.actual.file());
    for (std::size_t index = 0; index < changes.size(); ++index) {
        MoDiffPlacedChange const& placed = changes[index];
        Side const master = {sources.master, placed.change.ranges.master};
        Side const actual = {sources.actual, placed.change.ranges.actual};
        MoDiffRange const ofMaster = master.lines(placed.file.master, actual);
        MoDiffRange const ofActual = actual.lines(placed.file.actual, master);
        if (segments.empty() || (ofMaster.begin > segments.back().lines.master.end &&
                                 ofActual.begin > segments.back().lines.actual.end)) {
            segments.push_back({index,
                                index + 1,
                                {ofMaster, ofActual},
                                {masterLines.at(ofMaster.begin), actualLines.at(ofActual.begin)}});
            continue;
        }
        MoDiffSegment& last = segments.back();
        last.endChange = index + 1;
        last.lines.master.end = std::max(last.lines.master.end, ofMaster.end);
        last.lines.actual.end = std::max(last.lines.actual.end, ofActual.end);
    }
    return segments;
}

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
    std::vector<MoDiffHunk> hunks;
    for (MoDiffSegment const& segment : segmentsOf(sources, changes)) {
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
