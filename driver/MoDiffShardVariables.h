#ifndef MO_DIFF_SHARD_VARIABLES_H
#define MO_DIFF_SHARD_VARIABLES_H

#include <optional>
#include <string>

/// Which part of a run that is spread over several machines is asked for.
struct MoDiffAskedShard {
    unsigned index = 1; ///< from 1
    unsigned count = 1;
    std::string origin; ///< of the request: an option or a variable
};

namespace MoDiffShardVariables {

/// Reads "2/5". Raises std::invalid_argument when it is nothing of the kind.
MoDiffAskedShard parse(std::string const& text, std::string const& origin);

/// What the variables of runners say that spread tests. None when none is set. Touches the file by which such a
/// runner learns that the request was understood. Raises std::invalid_argument for values that make no sense and
/// std::system_error when the file cannot be written.
std::optional<MoDiffAskedShard> read();

} // namespace MoDiffShardVariables

#endif
