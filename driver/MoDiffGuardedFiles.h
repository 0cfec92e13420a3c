#ifndef MO_DIFF_GUARDED_FILES_H
#define MO_DIFF_GUARDED_FILES_H

#include "MoDiffSuiteConfiguration.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

/// Knows which files a command reads and writes, so that no output takes the place of an input or of another output.
/// Files are the same when they are on the disk, whatever the names, or by their names when they are not there yet.
class MoDiffGuardedFiles {
public:
    /// Adds a file that must not be written.
    /// @param what what it is, for messages: "a master", "the log"
    void protect(std::string const& name, char const* what);
    /// Adds the scripts that compare files of some formats, as seen from the working directory.
    void protectScripts();
    /// Adds the directories in which each file counts as a master or an actual file: all folders of masters below the
    /// current directory, which must be the working directory, and the output directories of the formats.
    void protectTree(MoDiffSuiteConfiguration const& configuration);
    /// Raises std::runtime_error when a file or directory lies in one of those.
    void requireOutside(std::string const& name, char const* what) const;
    /// Raises std::runtime_error when a file that is to be written is one of those, or else adds it to them.
    void claim(std::string const& name, char const* what);
    /// What the file is; null when it is none of those.
    char const* find(std::string const& name) const;

private:
    /// Device and number of a regular file, or its path; none for what cannot be overwritten, a device, say.
    using Identity = std::pair<std::pair<unsigned long long, unsigned long long>, std::string>;
    static Identity identityOf(std::string const& name);
    static bool isFile(Identity const& identity);

    std::map<Identity, char const*> m_files;
    std::string m_root;                 ///< below which folders of masters lie; empty for none
    std::vector<std::string> m_outputs; ///< the output directories
};

#endif
