#ifndef MO_DIFF_TOML_TEXT_H
#define MO_DIFF_TOML_TEXT_H

#include <string>
#include <string_view>

/// Texts as configuration files hold them.
namespace MoDiffTomlText {

/// A text as a string of TOML, quotation marks included. Every control character is escaped; bytes that are not
/// UTF-8, which no such file can hold, become replacement characters: see canHold().
std::string quoted(std::string_view text);

/// Whether a text comes back from a configuration file as it was.
bool canHold(std::string_view text);

} // namespace MoDiffTomlText

#endif
