#ifndef MO_DIFF_STYLED_TEXT_H
#define MO_DIFF_STYLED_TEXT_H

#include "MoDiffStyledLine.h"

#include <cstddef>
#include <string>
#include <vector>

/// Styled lines as a terminal shows them.
namespace MoDiffStyledText {

/// The line without its end.
/// @param colours whether styles are told by escape sequences
std::string shown(MoDiffStyledLine const& line, bool colours);

/// The line in rows of so many columns.
std::vector<MoDiffStyledLine> wrapped(MoDiffStyledLine const& line, std::size_t columns);

} // namespace MoDiffStyledText

#endif
