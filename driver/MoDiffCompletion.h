#ifndef MO_DIFF_COMPLETION_H
#define MO_DIFF_COMPLETION_H

#include <iosfwd>
#include <string>
#include <vector>

namespace CLI {
class App;
}

/// What a shell offers when the tab key is pressed. The shells' own scripts, in share/completion/, ask the program.
namespace MoDiffCompletion {

/// Writes what the last word may become: a line each, with the whole word, a tab and a few words about it. A line
/// without a word, "\tfiles" or "\tdirectories", leaves it to the shell to offer these. Where nothing is known, or
/// the last record cannot be read, nothing is written.
/// @param app   with all commands
/// @param words those behind the program's name, up to the one that is to be completed, which may be empty
void print(CLI::App const& app, std::vector<std::string> const& words, std::ostream& out);

} // namespace MoDiffCompletion

#endif
