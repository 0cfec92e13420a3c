#include "MoHeap.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <malloc.h>

// The sanitizers replace the allocator, whose own figures are then 0; they offer this count instead.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak)); // NOLINT: its own name

namespace {

// What the C library's allocator keeps of freed blocks for each thread: so many of each of so many sizes.
std::size_t const kCachedBlocks = 7;
std::size_t const kCachedSizes = 64;
std::size_t const kSmallestBlock = 3 * sizeof(std::size_t);

/// Blocks held for a moment.
class HeldBlocks {
public:
    HeldBlocks() = default;
    ~HeldBlocks() {
        for (std::size_t i = 0; i < m_count; ++i)
            std::free(m_blocks[i]);
    }
    HeldBlocks(HeldBlocks const&) = delete;
    HeldBlocks& operator=(HeldBlocks const&) = delete;

    bool hasRoom() const { return m_count < m_blocks.size(); }

    /// @return the block's real size, which a remainder too small for a block of its own may increase
    std::size_t take(std::size_t size) {
        void* const block = std::malloc(size);
        m_blocks[m_count++] = block;
        return malloc_usable_size(block);
    }

private:
    std::array<void*, 2 * kCachedSizes* kCachedBlocks> m_blocks = {};
    std::size_t m_count = 0;
};

/// Fills this thread's cache, whose blocks the allocator counts as in use: once it is full, what it holds is the same
/// at each measurement and cancels out of their difference.
void fillCache() {
    HeldBlocks blocks;
    // The largest first, and freed in this order, so that a block that is larger than asked for finds its size full.
    for (std::size_t i = kCachedSizes; i-- > 0;) {
        std::size_t const size = kSmallestBlock + i * alignof(std::max_align_t);
        for (std::size_t taken = 0; taken < kCachedBlocks && blocks.hasRoom();)
            taken += blocks.take(size) == size ? 1 : 0;
    }
}

/// Large blocks are mapped one by one and take whole pages, more than a hundredth of the smaller ones among them.
/// Once such a block has been freed, the allocator maps larger ones only.
void raiseSizeOfMappedBlocks() {
    HeldBlocks().take(500 << 10); // what is lost to pages is less than a hundredth from here on
}

} // namespace

unsigned long MoHeap::bytesInUse() {
    if (__sanitizer_get_current_allocated_bytes)
        return __sanitizer_get_current_allocated_bytes();
    raiseSizeOfMappedBlocks();
    fillCache();
    struct mallinfo2 const info = mallinfo2();
    return info.uordblks + info.hblkhd;
}
