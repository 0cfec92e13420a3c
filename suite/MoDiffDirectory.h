#ifndef MO_DIFF_DIRECTORY_H
#define MO_DIFF_DIRECTORY_H

#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

/// The entries of a directory. What they are is taken from the directory itself where it tells, so that files cost no
/// call of the system each.
struct MoDiffDirectory {
    enum Kind {
        eFile, ///< everything but a directory; a link that leads nowhere, too
        eDirectory,
        eLinkedDirectory,
        eUnknown ///< a link that may not be followed
    };
    struct Entry {
        std::string name;
        Kind kind;
        bool isRegular; ///< whether the directory tells that it is a regular file
    };
    using Identity = std::pair<dev_t, ino_t>;

    std::vector<Entry> files;
    std::vector<Entry> others; ///< directories and what may lead to some, in byte order
    Identity identity;         ///< the same for all paths that lead to the directory

    /// Reads a directory; "" is the current one. Raises std::system_error, whose text names it.
    static MoDiffDirectory read(std::string const& path);

    /// The path of the current directory. Raises std::system_error when it has been removed.
    static std::string current();
};

#endif
