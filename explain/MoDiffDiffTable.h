#ifndef MO_DIFF_DIFF_TABLE_H
#define MO_DIFF_DIFF_TABLE_H

#include "MoDiffHunkLines.h"

#include <string>

/// What differs between the files of a pair as HTML.
class MoDiffDiffTable {
public:
    /// @param explanation must outlive the object
    /// @param room        bytes; what does not fit into it is counted
    MoDiffDiffTable(MoDiffPairExplanation const& explanation, std::size_t room);

    /// Hunks in tables, bytes in rows of their offsets, a table of cells, or a script's words.
    std::string toHtml();
    /// How many places are shown, which keys go to: elements of the class "place".
    std::size_t places() const { return m_places; }

private:
    std::string hunk(MoDiffHunk const& hunk);
    std::string hunks();
    std::string bytes() const;

    MoDiffPairExplanation const& m_explanation;
    std::size_t m_room;
    MoDiffHunkLines m_lines;
    std::size_t m_places = 0;
};

#endif
