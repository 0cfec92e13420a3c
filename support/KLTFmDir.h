#ifndef KLT_FM_DIR_H
#define KLT_FM_DIR_H

#include "KLTExport.h"

#include <string>

class I18NString;

/// Path arithmetic and file queries. Paths are byte strings with "/" between their components.
/// All operations may be called from several threads at once, but for the effective working directory.
class KLT_EXPORT KLTFmDir {
public:
    /// Splits a path at its last "/": *a/b/c.txt* gives the directory *a/b* and the file *c.txt*. The directory
    /// carries no trailing separator, but for the root "/"; that of a bare name is ".".
    /// @param path      not null
    /// @param directory receives the directory, or null when it is not wanted
    /// @param file      receives the last component, or null when it is not wanted; may be empty
    static void splitPath(char const* path, std::string* directory, std::string* file);

    /// Appends a component with exactly one "/" before it; onto an empty path the component alone.
    static void joinPath(std::string& path, char const* component);

    /// Tells whether an object of a kind is at the path, following symbolic links.
    /// @param mode one POSIX file type and the permission bits that must be set, as in st_mode: 0x8100 asks for a
    ///             regular file readable by its owner. What the running user may open plays no part.
    static bool exists(char const* path, unsigned short mode);

    /// Records the directory as the layer's effective working directory. Paths are not resolved against it.
    static void setEffectiveWorkingDir(I18NString const& directory);

    /// The directory last recorded, in UTF-8; empty before.
    static std::string getEffectiveWorkingDir();
};

#endif
