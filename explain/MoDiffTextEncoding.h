#ifndef MO_DIFF_TEXT_ENCODING_H
#define MO_DIFF_TEXT_ENCODING_H

#include <string>
#include <string_view>

/// How the characters of a file are written.
namespace MoDiffTextEncoding {

/// For people: "UTF-8 with byte-order mark", "UTF-16, little end first", "ISO 8859-1 or a relative" for a text that
/// is not UTF-8.
char const* nameOf(std::string_view file);

/// The characters in UTF-8, without a byte-order mark. Bytes of a text that is not UTF-8 count as ISO 8859-1.
std::string toUtf8(std::string_view file);

/// Whether the characters of two files are the same, byte-order marks left out.
bool haveSameCharacters(std::string_view first, std::string_view second);

} // namespace MoDiffTextEncoding

#endif
