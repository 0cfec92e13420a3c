#include "MoDiffFileContent.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

[[noreturn]] void failToRead(std::string const& name, int error) {
    throw std::system_error(error, std::generic_category(), "cannot read " + name);
}

/// An open file; a FIFO does not block.
class Descriptor {
public:
    explicit Descriptor(std::string const& name) : m_number(open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
        if (m_number < 0)
            failToRead(name, errno);
    }
    ~Descriptor() { close(m_number); }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;
    int number() const { return m_number; }

private:
    int m_number;
};

} // namespace

std::string MoDiffFileContent::read(std::string const& name) {
    Descriptor const file(name);
    struct stat status = {};
    if (fstat(file.number(), &status) != 0)
        failToRead(name, errno);
    if (!S_ISREG(status.st_mode))
        failToRead(name, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    std::string content(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t done = 0;
    while (done < content.size()) {
        ssize_t const count = ::read(file.number(), content.data() + done, content.size() - done);
        if (count < 0 && errno != EINTR)
            failToRead(name, errno);
        if (count == 0)
            break; // shorter than it was
        done += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    content.resize(done);
    return content;
}
