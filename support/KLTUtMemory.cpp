#include "KLTUtMemory.h"

#include <cstddef>
#include <malloc.h>
#include <ostream>

// The sanitizers replace the allocator, whose own figures are then 0; they offer this count instead.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak)); // NOLINT: its own name

namespace {

std::size_t heapBytesInUse() {
    if (__sanitizer_get_current_allocated_bytes)
        return __sanitizer_get_current_allocated_bytes();
    struct mallinfo2 const info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

} // namespace

unsigned long KLTUtMemory::getMemoryConsumption(unsigned int* detail, std::ostream* report) {
    unsigned long const bytes = heapBytesInUse();
    if (detail)
        *detail = 0;
    if (report)
        *report << bytes << " bytes of heap in use\n";
    return bytes;
}
