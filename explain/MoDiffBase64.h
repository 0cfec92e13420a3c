#ifndef MO_DIFF_BASE64_H
#define MO_DIFF_BASE64_H

#include <string>
#include <string_view>

/// Bytes as letters, four for three bytes.
namespace MoDiffBase64 {

std::string encode(std::string_view bytes);
/// What is no letter of the alphabet is passed over; the first "=" ends the text.
std::string decode(std::string_view text);

} // namespace MoDiffBase64

#endif
