#ifndef MO_DIFF_HUNK_LINES_H
#define MO_DIFF_HUNK_LINES_H

#include "MoDiffCsvSplitter.h"
#include "MoDiffLineText.h"
#include "MoDiffPairExplanation.h"
#include "MoDiffStyledLine.h"

#include <optional>
#include <vector>

/// The lines of hunks, for whoever shows them: of both files, numbered, with marks.
class MoDiffHunkLines {
public:
    struct Line {
        std::size_t number = 0; ///< in its file, from 1; 0 for a note about lines that are not shown
        MoDiffStyledLine spans;
        /// By a change. A line of a changed block may be there only because the other side's lines end elsewhere.
        bool isTouched = false;
    };
    /// Lines that stand beside each other. Unchanged ones may be cut differently: cleansing can hide line ends.
    struct Block {
        bool isChanged;
        std::vector<Line> master;
        std::vector<Line> actual;
    };

    /// @param explanation must outlive the object
    /// @param mostLines   of a side in a row that change; what is more is counted
    MoDiffHunkLines(MoDiffPairExplanation const& explanation, std::size_t mostLines);

    std::vector<Block> of(MoDiffHunk const& hunk) const;
    /// Where a hunk's first change stands in a file.
    struct Place {
        MoDiffPlace text;
        std::optional<MoDiffCsvPlaces::Place> record; ///< for records
    };
    /// Hunks must come in their order.
    MoDiffBothSides<Place> placeOf(MoDiffHunk const& hunk);

private:
    using Range = MoDiffRange MoDiffBothSides<MoDiffRange>::*;
    using Number = std::size_t MoDiffBothSides<std::size_t>::*;

    /// One side.
    class Side {
    public:
        Side(MoDiffPairExplanation const& explanation, MoDiffSourceText const& source, Range range, Number number,
             MoDiffLineText::Styles styles, std::size_t mostLines);

        std::vector<Line> before(MoDiffSegment const& segment, MoDiffRange part) const;
        std::vector<Line> behind(MoDiffSegment const& segment, MoDiffRange part) const;
        std::vector<Line> changed(MoDiffSegment const& segment) const;

    private:
        std::vector<Line> context(MoDiffRange part, std::size_t number) const;
        MoDiffRange const& mark(std::size_t change) const { return m_changes[change].file.*m_range; }
        std::size_t firstChange(MoDiffSegment const& segment, std::size_t place) const;
        std::vector<MoDiffRange> marks(MoDiffSegment const& segment, MoDiffRange line) const;
        std::size_t firstMarkedLine(MoDiffSegment const& segment, MoDiffRange rest) const;
        std::size_t fold(MoDiffRange unmarked, std::size_t& number, std::vector<Line>& lines) const;

        std::vector<MoDiffPlacedChange> const& m_changes;
        MoDiffSourceText const& m_source;
        Range m_range;
        Number m_number;
        MoDiffLineText m_changed;
        MoDiffLineText m_context;
        std::size_t m_mostLines;
    };

    MoDiffPairExplanation const& m_explanation;
    Side m_master;
    Side m_actual;
    MoDiffCsvSplitter m_csv;
    MoDiffCsvPlaces m_masterRecords;
    MoDiffCsvPlaces m_actualRecords;
};

#endif
