#ifndef MO_HEAP_H
#define MO_HEAP_H

/// The process's heap. May be called from several threads at once.
class MoHeap {
public:
    /// The bytes of all blocks that are in use, with the allocator's few bytes for each. Blocks that this thread has
    /// freed never count; some that other threads have freed do, since the allocator keeps these for them.
    static unsigned long bytesInUse();
};

#endif
