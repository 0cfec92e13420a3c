#ifndef KLT_UT_MEMORY_H
#define KLT_UT_MEMORY_H

#include "KLTExport.h"

#include <iosfwd>

/// Measures the process's memory. May be called from several threads at once.
class KLT_EXPORT KLTUtMemory {
public:
    /// The heap bytes in use by the process, so that a leak of a few kilobytes shows.
    /// @param detail pass null
    /// @param report when not null, receives one line with the figure
    static unsigned long getMemoryConsumption(unsigned int* detail, std::ostream* report);
};

#endif
