#ifndef MO_DIFF_HTML_H
#define MO_DIFF_HTML_H

#include "MoDiffStyledLine.h"

#include <cstdint>
#include <string>
#include <string_view>

/// Texts of anybody as parts of HTML, for contents and for values of attributes between double quotes alike.
namespace MoDiffHtml {

/// Bytes of files and names: characters that cannot be seen and bytes that are not UTF-8 become escapes, a backslash
/// two of them.
std::string bytes(std::string_view bytes);

/// Words in which such bytes are escaped already; control characters are escaped all the same.
std::string words(std::string_view words);

/// "`old` -> `new`" as code with an arrow; other words as they are.
std::string title(std::string_view words);

/// Lines become lines; a line end at the end is dropped.
std::string lines(std::string_view text);

/// A line with its styles; what is folded can be unfolded.
std::string line(MoDiffStyledLine const& line);

/// A document as the value of an attribute srcdoc: its characters as they are, U+FFFD for what is none, and elements
/// disarmed that fetch something or command the browser before a policy can forbid it.
std::string sourceDocument(std::string_view document);

/// "1 pair", "1,204 pairs".
std::string count(std::uint64_t count, char const* what);
/// "1,204".
std::string number(std::uint64_t count);

} // namespace MoDiffHtml

#endif
