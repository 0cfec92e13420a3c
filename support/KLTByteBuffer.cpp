#include "KLTByteBuffer.h"

#include <algorithm>

KLTByteBuffer::KLTByteBuffer(unsigned int capacity, unsigned int growth) : m_growth(growth) {
    m_bytes.reserve(std::size_t{capacity} + 1);
    m_bytes.push_back('\0');
}

void KLTByteBuffer::append(char const* bytes, std::size_t count) {
    if (count == 0)
        return;
    if (m_bytes.capacity() - m_bytes.size() < count)
        m_bytes.reserve(m_bytes.size() + std::max({count, m_growth, m_bytes.size()}));
    m_bytes.insert(m_bytes.end() - 1, bytes, bytes + count);
}
