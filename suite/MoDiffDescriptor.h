#ifndef MO_DIFF_DESCRIPTOR_H
#define MO_DIFF_DESCRIPTOR_H

#include <unistd.h>
#include <utility>

/// Owns a file descriptor.
class MoDiffDescriptor {
public:
    MoDiffDescriptor() = default;
    /// Takes over what a system call returned; negative for none.
    explicit MoDiffDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ~MoDiffDescriptor() { reset(); }
    MoDiffDescriptor(MoDiffDescriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    MoDiffDescriptor& operator=(MoDiffDescriptor&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }

    explicit operator bool() const { return m_descriptor >= 0; }
    int get() const { return m_descriptor; }

    void reset() {
        if (m_descriptor >= 0)
            close(std::exchange(m_descriptor, -1));
    }

private:
    int m_descriptor = -1;
};

#endif
