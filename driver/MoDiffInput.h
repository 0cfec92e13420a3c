#ifndef MO_DIFF_INPUT_H
#define MO_DIFF_INPUT_H

#include <string>
#include <vector>

namespace MoDiffInput {

/// All bytes of a file or pipe. Raises std::system_error, which names it, when it cannot be read to its end.
std::string readWhole(std::string const& name);

/// The names that a file lists, each in a line of its own; empty lines don't count.
/// @param name        "-" for standard input
/// @param isSeparated whether a NUL ends each name, so that it may hold line ends
std::vector<std::string> readNames(std::string const& name, bool isSeparated);

} // namespace MoDiffInput

#endif
