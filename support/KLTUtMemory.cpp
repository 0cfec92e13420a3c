#include "KLTUtMemory.h"

#include "MoDirectoryListing.h"
#include "MoHeap.h"
#include "MoOwnMemory.h"

#include <ostream>

unsigned long KLTUtMemory::getMemoryConsumption(unsigned int* detail, std::ostream* report) {
    MoDirectoryListing::forgetAll(); // whoever listed a directory first has not leaked it
    unsigned long const bytes = MoHeap::bytesInUse() - static_cast<unsigned long>(MoOwnMemory::total());
    if (detail)
        *detail = 0;
    if (report)
        *report << bytes << " bytes of heap in use\n";
    return bytes;
}
