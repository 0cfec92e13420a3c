#include "MoDiffFileState.h"

#include "MoDiffDescriptor.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace {

/// What a file is that is no regular one.
char const* kindOf(mode_t mode) {
    struct Row {
        mode_t type;
        char const* words;
    };
    static Row const rows[] = {{S_IFDIR, "is a directory"},
                               {S_IFIFO, "is a FIFO"},
                               {S_IFCHR, "is a device"},
                               {S_IFBLK, "is a device"},
                               {S_IFSOCK, "is a socket"}};
    for (Row const& row : rows)
        if ((mode & S_IFMT) == row.type)
            return row.words;
    return "is no regular file";
}

/// Whether an error of the system means that there is nothing at a path.
bool meansAbsent(int error) {
    return error == ENOENT || error == ENOTDIR;
}

bool isSame(timespec const& left, timespec const& right) {
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

} // namespace

MoDiffFileState::MoDiffFileState(std::string const& path) {
    if (stat(path.c_str(), &m_status) != 0) {
        m_trouble = meansAbsent(errno) ? "" : std::strerror(errno);
        return;
    }
    m_exists = true;
    if (!S_ISREG(m_status.st_mode))
        m_trouble = kindOf(m_status.st_mode);
}

std::string MoDiffFileState::findOpenTrouble(std::string const& path) {
    if (!MoDiffDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)))
        return meansAbsent(errno) ? "" : std::strerror(errno);
    struct stat status;
    bool const isRefused = stat(path.c_str(), &status) == 0 && !(status.st_mode & S_IRUSR);
    return isRefused ? "its owner has no permission to read it" : ""; // engines take no such file
}

bool MoDiffFileState::isSameFile(MoDiffFileState const& other) const {
    return m_status.st_dev == other.m_status.st_dev && m_status.st_ino == other.m_status.st_ino;
}

bool MoDiffFileState::isUnchanged(MoDiffFileState const& later) const {
    return isSameFile(later) && m_status.st_size == later.m_status.st_size &&
           isSame(m_status.st_mtim, later.m_status.st_mtim);
}

bool MoDiffFileState::isUntouched(MoDiffFileState const& later) const {
    return m_exists == later.m_exists && m_trouble == later.m_trouble && isUnchanged(later) &&
           isSame(m_status.st_ctim, later.m_status.st_ctim);
}
