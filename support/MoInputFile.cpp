#include "MoInputFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

MoInputFile::MoInputFile(std::string const& name) : m_descriptor(open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
}

MoInputFile::~MoInputFile() {
    if (isOpen())
        close(m_descriptor);
}

struct stat MoInputFile::status() const {
    struct stat status = {};
    fstat(m_descriptor, &status);
    return status;
}

off_t MoInputFile::seekLength() const {
    off_t const position = lseek(m_descriptor, 0, SEEK_CUR);
    if (position < 0)
        return 0;
    off_t const length = lseek(m_descriptor, 0, SEEK_END);
    lseek(m_descriptor, position, SEEK_SET);
    return std::max<off_t>(length, 0);
}

ssize_t MoInputFile::readSome(char* bytes, std::size_t count) {
    for (;;) {
        ssize_t const got = ::read(m_descriptor, bytes, count);
        if (got >= 0 || errno != EINTR)
            return got;
    }
}

ssize_t MoInputFile::read(char* bytes, std::size_t count) {
    std::size_t all = 0;
    while (all < count) {
        ssize_t const got = readSome(bytes + all, count - all);
        if (got < 0)
            return -1;
        if (got == 0)
            break;
        all += static_cast<std::size_t>(got);
    }
    return static_cast<ssize_t>(all);
}
