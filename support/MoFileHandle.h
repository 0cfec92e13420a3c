#ifndef MO_FILE_HANDLE_H
#define MO_FILE_HANDLE_H

#include "KLTExport.h"

#include <cstdio>
#include <memory>
#include <string>

/// Owns a C stream and closes it at the end of its scope. Used from one thread at a time.
class KLT_EXPORT MoFileHandle {
public:
    /// Opens a file as fopen() does, closed on exec; a failure shows only in the null stream. A FIFO is waited for
    /// until it has a writer: a caller who must not wait asks first what is at the path. A directory, which fopen()
    /// would open for reading, is refused (errno EISDIR), since nothing can be read from it.
    /// @param name not null
    /// @param mode as for fopen()
    MoFileHandle(char const* name, char const* mode);
    MoFileHandle(std::string const& name, char const* mode) : MoFileHandle(name.c_str(), mode) {}

    /// The stream, which stays this handle's; null when the open failed.
    operator FILE*() const { return m_stream.get(); }

private:
    struct Closer {
        void operator()(FILE* stream) const { std::fclose(stream); }
    };
    std::unique_ptr<FILE, Closer> m_stream;
};

#endif
