#include "MoReadOpen.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int const kWriterPatienceMilliseconds = 1000;

bool awaitWriter(int descriptor) {
    struct pollfd request = {descriptor, POLLIN, 0};
    int ready = 0;
    do
        ready = poll(&request, 1, kWriterPatienceMilliseconds);
    while (ready < 0 && errno == EINTR);
    if (ready <= 0) {
        errno = ENXIO;
        return false;
    }
    return true;
}

bool makeReadable(int descriptor, MoReadOpen::DirectoryRule directories) {
    struct stat status;
    if (fstat(descriptor, &status) != 0)
        return false;
    if (S_ISDIR(status.st_mode) && directories == MoReadOpen::eRefuseDirectory) {
        errno = EISDIR;
        return false;
    }
    if (S_ISFIFO(status.st_mode) && !awaitWriter(descriptor))
        return false;
    return fcntl(descriptor, F_SETFL, O_RDONLY) == 0; // reads wait again
}

} // namespace

int MoReadOpen::openDescriptor(char const* name, DirectoryRule directories) {
    int descriptor = -1;
    do
        descriptor = open(name, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    while (descriptor < 0 && errno == EINTR);
    if (descriptor >= 0 && !makeReadable(descriptor, directories)) {
        int const reason = errno;
        close(descriptor);
        errno = reason;
        return -1;
    }
    return descriptor;
}
