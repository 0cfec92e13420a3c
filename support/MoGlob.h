#ifndef MO_GLOB_H
#define MO_GLOB_H

#include "KLTExport.h"

#include <list>
#include <string>

/// Finds files by a wildcard pattern. May be called from several threads at once.
///
/// Listings of directories are remembered while the file system vouches that the directory has not changed, so
/// that finding the masters of thousands of reports in one directory costs one listing.
class KLT_EXPORT MoGlob {
public:
    /// Appends the path of every entry but directories whose name matches the pattern's last component, in ascending
    /// byte order, each spelled as the pattern's directory part followed by the name. Only "*" is special: it
    /// stands for any run of bytes, the empty one included. A symbolic link is taken for what it leads to; one that
    /// leads nowhere is listed, so that it is noticed.
    /// @param pattern not null; a wildcard before the last "/" is an ordinary character
    /// @return the number of paths appended; 0, with the list unchanged, also when the directory cannot be read
    static int globFiles(char const* pattern, std::list<std::string>& files);
};

#endif
