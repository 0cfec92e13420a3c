#ifndef MO_DIFF_RECORD_TEXT_H
#define MO_DIFF_RECORD_TEXT_H

#include <string>
#include <string_view>

/// Bytes of names and reports in the strings of a record. JSON knows characters only, so a byte that is not UTF-8
/// stands there as \xHH, and a backslash as two of them, in the string's value: every JSON reader takes it, and
/// nothing is lost.
namespace MoDiffRecordText {

/// The bytes as a JSON string, quotation marks included.
std::string quoted(std::string_view bytes);

/// The same, appended to a text.
void appendQuoted(std::string& json, std::string_view bytes);

/// The bytes that a string's value stands for. Raises std::invalid_argument for a backslash that begins no such
/// escape.
std::string bytesOf(std::string_view value);

} // namespace MoDiffRecordText

#endif
