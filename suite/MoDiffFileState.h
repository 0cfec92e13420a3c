#ifndef MO_DIFF_FILE_STATE_H
#define MO_DIFF_FILE_STATE_H

#include <string>
#include <sys/stat.h>

/// What the system tells of a file that is to be compared.
class MoDiffFileState {
public:
    /// Looks at a path; links are followed.
    explicit MoDiffFileState(std::string const& path);

    /// Whether anything is there.
    bool exists() const { return m_exists; }
    /// Why the path is that of no regular file though something is there, or may be: "is a directory", "Permission
    /// denied"; "" otherwise.
    std::string const& getTrouble() const { return m_trouble; }
    /// Why a regular file cannot be opened; "" when it can or when nothing is at the path any more.
    static std::string findOpenTrouble(std::string const& path);

    /// In seconds of the real-time clock.
    time_t getModificationTime() const { return m_status.st_mtim.tv_sec; }
    /// Whether both are one and the same file.
    bool isSameFile(MoDiffFileState const& other) const;
    /// Whether nothing tells that the file was changed or replaced between two looks at it.
    bool isUnchanged(MoDiffFileState const& later) const;
    /// The same, its permissions included, and whether it is there and can be looked at.
    bool isUntouched(MoDiffFileState const& later) const;

private:
    bool m_exists = false;
    std::string m_trouble;
    struct stat m_status = {};
};

#endif
