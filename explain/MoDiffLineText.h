#ifndef MO_DIFF_LINE_TEXT_H
#define MO_DIFF_LINE_TEXT_H

#include "MoDiffSourceText.h"
#include "MoDiffStyledLine.h"

#include <vector>

/// Shows lines of a file: changes marked, hidden text as such, characters that cannot be seen as escapes. A long line
/// is cut to what stands around its changes, a long hidden stretch to its name and size; both say so.
class MoDiffLineText {
public:
    struct Styles {
        MoDiffStyle plain;
        MoDiffStyle mark;
    };

    /// The source must outlive the object.
    MoDiffLineText(MoDiffSourceText const& source, Styles styles) : m_source(source), m_styles(styles) {}

    /// @param line of the file, with or without its line end, which is shown only where it is marked
    /// @param marks parts of the file in order, which may reach beyond the line; an empty one marks nothing, but
    ///        what stands around it is not cut
    MoDiffStyledLine spans(MoDiffRange line, std::vector<MoDiffRange> const& marks) const;

private:
    struct Piece {
        MoDiffRange range;
        MoDiffStyle style;
    };

    void showWindow(MoDiffRange window, std::vector<MoDiffRange> const& marks, MoDiffStyledLine& line) const;
    Piece pieceAt(std::size_t at, MoDiffRange window, std::vector<MoDiffRange> const& marks) const;
    MoDiffSpan shown(Piece const& piece) const;

    MoDiffSourceText const& m_source;
    Styles m_styles;
};

#endif
