#ifndef MO_DIFF_OPTION_TABLE_H
#define MO_DIFF_OPTION_TABLE_H

#include <iosfwd>

namespace CLI {
class App;
}

/// What the program can be told: commands, options, keys of the configuration file, formats. The manual is made from
/// it, so that it says what this very program understands.
namespace MoDiffOptionTable {

/// Writes all of it as JSON.
/// @param app with all commands
void print(CLI::App const& app, std::ostream& out);

} // namespace MoDiffOptionTable

#endif
