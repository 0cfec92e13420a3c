#ifndef KLT_BYTE_BUFFER_H
#define KLT_BYTE_BUFFER_H

#include "KLTExport.h"

#include <cstddef>
#include <vector>

/// A byte buffer that grows. Used from one thread at a time.
class KLT_EXPORT KLTByteBuffer {
public:
    /// @param capacity bytes to reserve at once
    /// @param growth   the least number of bytes by which the buffer grows when it is full
    KLTByteBuffer(unsigned int capacity, unsigned int growth);

    /// Appends bytes; they may not be this buffer's own.
    void append(char const* bytes, std::size_t count);

    /// The contents, NUL-terminated; owned by the buffer and valid until the next append.
    char const* str() const { return m_bytes.data(); }
    /// The number of bytes, the terminator not counted.
    std::size_t length() const { return m_bytes.size() - 1; }

private:
    std::size_t m_growth;
    std::vector<char> m_bytes; // always ends in one NUL
};

#endif
