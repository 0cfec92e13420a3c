#ifndef MO_DIFF_IGNORED_KINDS_H
#define MO_DIFF_IGNORED_KINDS_H

#include <string>
#include <vector>

/// The kinds of differences that scripts can leave out; made from the scripts' tables when the program is built.
namespace MoDiffIgnoredKinds {

/// Each as "xlsx:filters", those of a format together and in the script's order.
std::vector<std::string> const& all();

} // namespace MoDiffIgnoredKinds

#endif
