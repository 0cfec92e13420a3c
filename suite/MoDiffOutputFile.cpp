#include "MoDiffOutputFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

/// Raises the system's error unless a call succeeded; returns what the call returned.
template<typename Result>
Result checked(Result result, std::string const& name) {
    if (result < 0)
        throw std::system_error(errno, std::generic_category(), "cannot write " + name);
    return result;
}

/// Removes a file at the end of its scope unless it has got its final name.
struct TemporaryName {
    std::string name;
    bool isTemporary = true;
    ~TemporaryName() {
        if (isTemporary)
            unlink(name.c_str());
    }
};

} // namespace

MoDiffOutputFile::MoDiffOutputFile(std::string const& name)
    : MoDiffOutputFile(name, checked(open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666), name)) {
}

MoDiffOutputFile::MoDiffOutputFile(std::string const& name, int descriptor) : m_name(name), m_descriptor(descriptor) {
}

MoDiffOutputFile::~MoDiffOutputFile() {
    close(m_descriptor);
}

void MoDiffOutputFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t const count = ::write(m_descriptor, bytes.data(), bytes.size());
        if (count >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            checked(count, m_name);
    }
}

void MoDiffOutputFile::replace(std::string const& name, std::string_view contents, unsigned permissions,
                               Synchronization synchronization) {
    std::string pattern = name + ".XXXXXX";
    int const descriptor = checked(mkostemp(pattern.data(), O_CLOEXEC), name);
    TemporaryName temporary{pattern};
    MoDiffOutputFile file(name, descriptor);
    file.write(contents);
    checked(fchmod(descriptor, static_cast<mode_t>(permissions)), name);
    if (synchronization == eNow)
        checked(fsync(descriptor), name);
    checked(std::rename(pattern.c_str(), name.c_str()), name);
    temporary.isTemporary = false;
}
