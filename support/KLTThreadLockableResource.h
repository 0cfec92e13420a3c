#ifndef KLT_THREAD_LOCKABLE_RESOURCE_H
#define KLT_THREAD_LOCKABLE_RESOURCE_H

#include "KLTExport.h"

/// Something that can be locked and unlocked, for use with KLTThreadGuard.
class KLT_EXPORT KLTThreadLockableResource {
public:
    virtual ~KLTThreadLockableResource();
    virtual void lock() = 0;
    virtual void unlock() = 0;
};

#endif
