#ifndef KLT_THREAD_GUARD_H
#define KLT_THREAD_GUARD_H

#include "KLTThreadLockableResource.h"

/// Holds a lock for its scope: { KLTThreadGuard guard(m_lock); ++m_count; }
class KLT_EXPORT KLTThreadGuard {
public:
    /// Locks the resource, which must outlive the guard.
    [[nodiscard]] explicit KLTThreadGuard(KLTThreadLockableResource& resource);
    ~KLTThreadGuard();
    KLTThreadGuard(KLTThreadGuard const&) = delete;
    KLTThreadGuard& operator=(KLTThreadGuard const&) = delete;

private:
    KLTThreadLockableResource& m_resource;
};

#endif
