#include "MoFileHandle.h"

#include <cerrno>
#include <sys/stat.h>

namespace {

bool isDirectory(FILE* stream) {
    struct stat status;
    return fstat(fileno(stream), &status) == 0 && S_ISDIR(status.st_mode);
}

FILE* openStream(char const* name, char const* mode) {
    FILE* const stream = std::fopen(name, (std::string(mode) + "e").c_str()); // "e": no child inherits it
    if (!stream || !isDirectory(stream))
        return stream;
    std::fclose(stream);
    errno = EISDIR;
    return nullptr;
}

} // namespace

MoFileHandle::MoFileHandle(char const* name, char const* mode) : m_stream(openStream(name, mode)) {
}
