#include "MoDiffInputFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <vector>

namespace {

std::size_t const kPiece = std::size_t{1} << 16;

[[noreturn]] void fail(int error, std::string const& name) {
    throw std::system_error(error, std::generic_category(), "cannot read " + name);
}

} // namespace

// Without blocking, so that a FIFO in the place of a file is found out and not waited for.
MoDiffInputFile::MoDiffInputFile(std::string const& name)
    : m_name(name), m_descriptor(open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    struct stat status = {};
    if (!m_descriptor || fstat(m_descriptor.get(), &status) < 0)
        fail(errno, name);
    if (!S_ISREG(status.st_mode))
        fail(S_ISDIR(status.st_mode) ? EISDIR : EINVAL, name);
    m_permissions = status.st_mode & 07777u;
}

void MoDiffInputFile::readAll(std::function<void(char const*, std::size_t)> const& take) {
    std::vector<char> piece(kPiece);
    for (;;) {
        ssize_t const count = read(m_descriptor.get(), piece.data(), piece.size());
        if (count < 0 && errno != EINTR)
            fail(errno, m_name);
        if (count == 0)
            return;
        if (count > 0)
            take(piece.data(), static_cast<std::size_t>(count));
    }
}
