#include "MoDiffDiffText.h"

#include "MoDiffHexText.h"
#include "MoDiffHunkLines.h"
#include "MoDiffShownText.h"

#include <algorithm>

namespace {

using Lines = std::vector<MoDiffHunkLines::Line>;
using Rows = std::vector<MoDiffStyledLine>;

std::size_t const kLeastCell = 20; // columns

MoDiffStyledLine note(std::string const& text) {
    return {{MoDiffStyle::eNote, text}};
}

/// "12:4" or "12:4 (record 3, field 2)"
std::string wordsOf(MoDiffHunkLines::Place const& place) {
    std::string const words = std::to_string(place.text.line) + ":" + std::to_string(place.text.column);
    return !place.record ? words
                         : words + " (record " + std::to_string(place.record->record) + ", field " +
                               std::to_string(place.record->field) + ")";
}

std::string wordsOf(MoDiffBothSides<MoDiffHunkLines::Place> const& places) {
    return "master " + wordsOf(places.master) + ", actual " + wordsOf(places.actual);
}

class Writer {
public:
    Writer(MoDiffPairExplanation const& explanation, MoDiffDiffText::Options const& options,
           MoDiffDiffText::Sink const& sink)
        : m_explanation(explanation), m_options(options), m_sink(sink), m_lines(explanation, options.mostLines),
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
        m_sink({{MoDiffStyle::ePlace, "@@ " + wordsOf(m_lines.placeOf(hunk)) + " @@"}});
        for (MoDiffHunkLines::Block const& block : m_lines.of(hunk)) {
            if (m_options.sideBySide) {
                writeBeside(block.master, block.actual, block.isChanged ? '|' : ' ');
            } else if (block.isChanged) {
                writeBelow(block.master, {MoDiffStyle::eRemoved, "-"});
                writeBelow(block.actual, {MoDiffStyle::eAdded, "+"});
            } else {
                writeBelow(block.master, {MoDiffStyle::eContext, " "});
            }
        }
    }

    void writeBelow(Lines const& lines, MoDiffSpan const& sign) {
        for (MoDiffHunkLines::Line const& line : lines) {
            MoDiffStyledLine signedLine = {sign};
            for (MoDiffSpan const& span : line.spans)
                signedLine.push_back(bracketed(span));
            m_sink(signedLine);
        }
    }

    void writeBeside(Lines const& master, Lines const& actual, char sign) {
        for (std::size_t index = 0; index < std::max(master.size(), actual.size()); ++index) {
            Rows const left = index < master.size() ? wrapped(master[index].spans) : Rows();
            Rows const right = index < actual.size() ? wrapped(actual[index].spans) : Rows();
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
    Rows wrapped(MoDiffStyledLine const& line) const {
        Rows rows(1);
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
    MoDiffHunkLines m_lines;
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
