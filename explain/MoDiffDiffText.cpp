#include "MoDiffDiffText.h"

#include "MoDiffCsvSplitter.h"
#include "MoDiffHexText.h"
#include "MoDiffLineText.h"
#include "MoDiffShownText.h"

#include <algorithm>

namespace {

using Styles = MoDiffLineText::Styles;
using Lines = std::vector<MoDiffStyledLine>;

std::size_t const kLeastCell = 20;   // columns
std::size_t const kLongUnmarked = 7; // lines between changes that are folded, all but
std::size_t const kKeptUnmarked = 2; // these at either end

MoDiffStyledLine note(std::string const& text) {
    return {{MoDiffStyle::eNote, text}};
}

/// One side of an explanation, line by line.
class Side {
public:
    using Member = MoDiffRange MoDiffBothSides<MoDiffRange>::*;

    Side(MoDiffPairExplanation const& explanation, MoDiffSourceText const& source, Member member, Styles styles,
         std::size_t mostLines)
        : m_changes(explanation.changes()), m_source(source), m_member(member), m_changed(source, styles),
          m_context(source, {MoDiffStyle::eContext, MoDiffStyle::eContext}), m_mostLines(mostLines) {}

    Lines context(MoDiffRange part) const {
        Lines lines;
        for (std::size_t at = part.begin; at < part.end; at = MoDiffLines::end(m_source.file(), at))
            lines.push_back(m_context.spans({at, MoDiffLines::end(m_source.file(), at)}, {}));
        return lines;
    }

    Lines changed(MoDiffSegment const& segment) const {
        MoDiffRange rest = segment.lines.*m_member;
        Lines lines;
        while (!rest.isEmpty() && lines.size() < m_mostLines) {
            MoDiffRange const line = {rest.begin, MoDiffLines::end(m_source.file(), rest.begin)};
            MoDiffRange const unmarked = {rest.begin, firstMarkedLine(segment, rest)};
            if (MoDiffLines::count(m_source.file(), unmarked) > kLongUnmarked) {
                rest.begin = fold(unmarked, lines);
                continue;
            }
            lines.push_back(m_changed.spans(line, marks(segment, line)));
            rest.begin = line.end;
        }
        if (std::size_t const more = MoDiffLines::count(m_source.file(), rest))
            lines.push_back(note(std::to_string(more) + (more == 1 ? " more line" : " more lines")));
        return lines;
    }

private:
    MoDiffRange const& mark(std::size_t change) const { return m_changes[change].file.*m_member; }

    /// The first change of a segment that ends behind a place; an empty one counts where it stands.
    std::size_t firstChange(MoDiffSegment const& segment, std::size_t place) const {
        auto const begin = m_changes.begin() + static_cast<std::ptrdiff_t>(segment.firstChange);
        auto const end = m_changes.begin() + static_cast<std::ptrdiff_t>(segment.endChange);
        auto const found = std::partition_point(begin, end, [&](MoDiffPlacedChange const& change) {
            MoDiffRange const& range = change.file.*m_member;
            return range.end < place || (range.end == place && !range.isEmpty());
        });
        return static_cast<std::size_t>(found - m_changes.begin());
    }

    std::vector<MoDiffRange> marks(MoDiffSegment const& segment, MoDiffRange line) const {
        std::vector<MoDiffRange> result;
        for (std::size_t change = firstChange(segment, line.begin);
             change < segment.endChange && (mark(change).begin < line.end || line.end == m_source.file().size());
             ++change)
            result.push_back(mark(change));
        return result;
    }

    std::size_t firstMarkedLine(MoDiffSegment const& segment, MoDiffRange rest) const {
        std::size_t const change = firstChange(segment, rest.begin);
        if (change == segment.endChange || mark(change).begin >= rest.end)
            return rest.end;
        return std::max(rest.begin, MoDiffLines::begin(m_source.file(), mark(change).begin));
    }

    /// Shows begin and end of lines without changes; returns where the shown ones at the end begin.
    std::size_t fold(MoDiffRange unmarked, Lines& lines) const {
        std::string_view const file = m_source.file();
        MoDiffRange inner = unmarked;
        for (std::size_t kept = 0; kept < kKeptUnmarked; ++kept) {
            std::size_t const end = MoDiffLines::end(file, inner.begin);
            lines.push_back(m_changed.spans({inner.begin, end}, {}));
            inner.begin = end;
            inner.end = MoDiffLines::begin(file, inner.end - 1);
        }
        lines.push_back(note(std::to_string(MoDiffLines::count(file, inner)) + " lines without a change"));
        return inner.end;
    }

    std::vector<MoDiffPlacedChange> const& m_changes;
    MoDiffSourceText const& m_source;
    Member m_member;
    MoDiffLineText m_changed;
    MoDiffLineText m_context;
    std::size_t m_mostLines;
};

class Writer {
public:
    Writer(MoDiffPairExplanation const& explanation, MoDiffDiffText::Options const& options,
           MoDiffDiffText::Sink const& sink)
        : m_explanation(explanation), m_options(options), m_sink(sink),
          m_master(explanation, explanation.sources().master, &MoDiffBothSides<MoDiffRange>::master,
                   {MoDiffStyle::eRemoved, MoDiffStyle::eRemovedMark}, options.mostLines),
          m_actual(explanation, explanation.sources().actual, &MoDiffBothSides<MoDiffRange>::actual,
                   {MoDiffStyle::eAdded, MoDiffStyle::eAddedMark}, options.mostLines),
          m_csv(explanation.separator()), m_masterRecords(explanation.sources().master.text(), m_csv),
          m_actualRecords(explanation.sources().actual.text(), m_csv),
          m_cell(std::max(kLeastCell, (options.width - std::min<std::size_t>(options.width, 3)) / 2)) {}

    void writeHunks() {
        auto const& hunks = m_explanation.hunks();
        std::size_t const shown = std::min(hunks.size(), m_options.mostHunks);
        for (std::size_t index = 0; index < shown; ++index)
            writeHunk(hunks[index]);
        if (shown < hunks.size())
            m_sink(note(std::to_string(hunks.size() - shown) + " more places differ"));
    }

private:
    void writeHunk(MoDiffHunk const& hunk) {
        m_sink({{MoDiffStyle::ePlace, placeOf(m_explanation.changes()[hunk.segments.front().firstChange])}});
        writeContext(hunk.before);
        for (std::size_t index = 0; index < hunk.segments.size(); ++index) {
            auto const& lines = hunk.segments[index].lines;
            if (index != 0) {
                auto const& last = hunk.segments[index - 1].lines;
                writeContext({{last.master.end, lines.master.begin}, {last.actual.end, lines.actual.begin}});
            }
            Lines const master = m_master.changed(hunk.segments[index]);
            Lines const actual = m_actual.changed(hunk.segments[index]);
            if (m_options.sideBySide) {
                writeBeside(master, actual, '|');
            } else {
                writeBelow(master, {MoDiffStyle::eRemoved, "-"});
                writeBelow(actual, {MoDiffStyle::eAdded, "+"});
            }
        }
        writeContext(hunk.after);
    }

    std::string placeOf(MoDiffPlacedChange const& placed) {
        auto const words = [](MoDiffPlace const& place) {
            return std::to_string(place.line) + ":" + std::to_string(place.column);
        };
        auto const recordWords = [](MoDiffCsvPlaces::Place const& place) {
            return " (record " + std::to_string(place.record) + ", field " + std::to_string(place.field) + ")";
        };
        std::string master = words(placed.place.master);
        std::string actual = words(placed.place.actual);
        if (m_explanation.view() == MoDiffPairExplanation::eRecords) {
            master += recordWords(m_masterRecords.at(placed.change.ranges.master.begin));
            actual += recordWords(m_actualRecords.at(placed.change.ranges.actual.begin));
        }
        return "@@ master " + master + ", actual " + actual + " @@";
    }

    void writeContext(MoDiffBothSides<MoDiffRange> const& parts) {
        if (m_options.sideBySide)
            writeBeside(m_master.context(parts.master), m_actual.context(parts.actual), ' ');
        else
            writeBelow(m_master.context(parts.master), {MoDiffStyle::eContext, " "});
    }

    void writeBelow(Lines const& lines, MoDiffSpan const& sign) {
        for (MoDiffStyledLine const& line : lines) {
            MoDiffStyledLine signedLine = {sign};
            for (MoDiffSpan const& span : line)
                signedLine.push_back(bracketed(span));
            m_sink(signedLine);
        }
    }

    void writeBeside(Lines const& master, Lines const& actual, char sign) {
        for (std::size_t index = 0; index < std::max(master.size(), actual.size()); ++index) {
            Lines const left = index < master.size() ? wrapped(master[index]) : Lines();
            Lines const right = index < actual.size() ? wrapped(actual[index]) : Lines();
            char const shown = index >= actual.size() ? '<' : index >= master.size() ? '>' : sign;
            MoDiffStyledLine const empty = {{MoDiffStyle::eContext, std::string(m_cell, ' ')}};
            for (std::size_t row = 0; row < std::max(left.size(), right.size()); ++row) {
                MoDiffStyledLine line = row < left.size() ? left[row] : empty;
                line.push_back({MoDiffStyle::eContext, std::string{' ', shown, ' '}});
                if (row < right.size())
                    line.insert(line.end(), right[row].begin(), right[row].end());
                m_sink(line);
            }
        }
    }

    /// A line in rows of the width of a cell, filled up with blanks.
    Lines wrapped(MoDiffStyledLine const& line) const {
        Lines rows(1);
        std::size_t room = m_cell;
        auto const fill = [&] { rows.back().push_back({MoDiffStyle::eContext, std::string(room, ' ')}); };
        for (MoDiffSpan const& span : line) {
            std::string const text = bracketed(span).text;
            std::string_view rest = text;
            while (!rest.empty()) {
                MoDiffShownText::Fit const fit = MoDiffShownText::fit(rest, room);
                rows.back().push_back({span.style, std::string(rest.substr(0, fit.bytes))});
                rest.remove_prefix(fit.bytes);
                room -= fit.columns;
                if (!rest.empty()) {
                    fill();
                    rows.emplace_back();
                    room = m_cell;
                }
            }
        }
        fill();
        return rows;
    }

    MoDiffSpan bracketed(MoDiffSpan const& span) const {
        if (m_options.brackets && span.style == MoDiffStyle::eRemovedMark)
            return {span.style, "[-" + span.text + "-]"};
        if (m_options.brackets && span.style == MoDiffStyle::eAddedMark)
            return {span.style, "{+" + span.text + "+}"};
        return span;
    }

    MoDiffPairExplanation const& m_explanation;
    MoDiffDiffText::Options const& m_options;
    MoDiffDiffText::Sink const& m_sink;
    Side m_master;
    Side m_actual;
    MoDiffCsvSplitter m_csv;
    MoDiffCsvPlaces m_masterRecords;
    MoDiffCsvPlaces m_actualRecords;
    std::size_t m_cell;
};

void writeOutput(std::string_view output, MoDiffDiffText::Sink const& sink) {
    for (std::size_t at = 0; at < output.size();) {
        std::size_t const end = MoDiffLines::end(output, at);
        std::string_view line = output.substr(at, end - at);
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
            line.remove_suffix(1);
        sink({{MoDiffStyle::eContext, MoDiffShownText::escaped(line)}});
        at = end;
    }
}

} // namespace

void MoDiffDiffText::write(MoDiffPairExplanation const& explanation, Options const& options, Sink const& sink) {
    for (MoDiffLabel const& label : explanation.labels())
        sink({{MoDiffStyle::eLabel, label.words}});
    for (std::string const& text : explanation.notes())
        sink(note(text));
    if (explanation.view() == MoDiffPairExplanation::eScript)
        return writeOutput(explanation.output(), sink);
    if (explanation.changes().empty())
        return sink(note("The files do not differ in what is compared."));
    if (explanation.view() == MoDiffPairExplanation::eBytes)
        return MoDiffHexText::write({explanation.sources().master.file(), explanation.sources().actual.file()},
                                    explanation.changes(), options.mostLines, sink);
    Writer(explanation, options, sink).writeHunks();
}
