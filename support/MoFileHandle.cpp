#include "MoFileHandle.h"

#include "MoReadOpen.h"

#include <cstring>
#include <unistd.h>

namespace {

FILE* openStream(char const* name, char const* mode) {
    if (std::strcmp(mode, "r") != 0 && std::strcmp(mode, "rb") != 0)
        return std::fopen(name, mode);
    int const descriptor = MoReadOpen::openDescriptor(name, MoReadOpen::eRefuseDirectory);
    if (descriptor < 0)
        return nullptr;
    FILE* const stream = fdopen(descriptor, mode);
    if (!stream)
        close(descriptor);
    return stream;
}

} // namespace

MoFileHandle::MoFileHandle(char const* name, char const* mode) : m_stream(openStream(name, mode)) {
}
