#ifndef MO_DIFF_INPUT_FILE_H
#define MO_DIFF_INPUT_FILE_H

#include "MoDiffDescriptor.h"

#include <cstddef>
#include <functional>
#include <string>

/// A regular file that is read from its beginning to its end, in pieces. Errors raise std::system_error and name it.
class MoDiffInputFile {
public:
    explicit MoDiffInputFile(std::string const& name);

    /// Gives all bytes, piece by piece.
    void readAll(std::function<void(char const*, std::size_t)> const& take);

    /// The permission bits.
    unsigned getPermissions() const { return m_permissions; }

private:
    std::string m_name;
    MoDiffDescriptor m_descriptor;
    unsigned m_permissions = 0;
};

#endif
