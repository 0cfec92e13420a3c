#ifndef KLT_UT_MEMORY_H
#define KLT_UT_MEMORY_H

#include "KLTExport.h"

#include <iosfwd>

/// Measures the process's memory. May be called from several threads at once.
class KLT_EXPORT KLTUtMemory {
public:
    /// The heap bytes in use by the process, so that a leak of a few kilobytes shows. What the library has built once
    /// and keeps for itself is left out. The difference of two figures is right for what the calling thread does
    /// between; of blocks that other threads have freed, the allocator counts some as in use.
    /// @param detail pass null
    /// @param report when not null, receives one line with the figure
    static unsigned long getMemoryConsumption(unsigned int* detail, std::ostream* report);
};

#endif
