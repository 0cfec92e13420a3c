#ifndef MO_DIFF_MASTER_FILE_H
#define MO_DIFF_MASTER_FILE_H

#include <stdexcept>
#include <string>

/// Changes to a master on disk, each whole or not at all. Errors raise std::system_error and name the file.
namespace MoDiffMasterFile {

/// Somebody has protected a file; the text tells the remedy.
struct Protected : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The absolute path of the file that a path leads to, all links followed; the last step need not exist. Of what is
/// missing before it, the path is taken as it is.
std::string resolve(std::string const& path);

/// Raises Protected when an existing master must not be replaced or removed.
void checkReplaceable(std::string const& master);
/// Raises Protected when no master can be put there. Missing directories are no hindrance.
void checkPlace(std::string const& master);

/// Puts the bytes of a file in the place of a master, whose mode is kept, by way of a temporary file beside it;
/// missing directories are made. On disk when this returns.
/// @param sum the SHA-256 that the file must have
/// @return false, the master being as it was, when the file has another one
bool replace(std::string const& master, std::string const& source, std::string const& sum);

/// Removes a master; gone from the disk when this returns.
void remove(std::string const& master);

/// Removes the temporary file that an interrupted replace() left.
void removeTemporary(std::string const& master);

} // namespace MoDiffMasterFile

#endif
