#ifndef MO_DIFF_FILE_CONTENT_H
#define MO_DIFF_FILE_CONTENT_H

#include <string>

namespace MoDiffFileContent {

/// The bytes of a regular file. Raises std::system_error naming it when it cannot be read or is none; never waits for
/// a pipe.
std::string read(std::string const& name);

} // namespace MoDiffFileContent

#endif
