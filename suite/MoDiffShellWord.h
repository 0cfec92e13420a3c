#ifndef MO_DIFF_SHELL_WORD_H
#define MO_DIFF_SHELL_WORD_H

#include <string>

/// Words of command lines that are told to people or handed to a shell.
namespace MoDiffShellWord {

/// A text between single quotes, so that a shell takes it as it is.
std::string quoted(std::string const& text);

/// The same where it is needed, else the text itself.
std::string asNeeded(std::string const& text);

} // namespace MoDiffShellWord

#endif
