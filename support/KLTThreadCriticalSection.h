#ifndef KLT_THREAD_CRITICAL_SECTION_H
#define KLT_THREAD_CRITICAL_SECTION_H

#include "KLTThreadLockableResource.h"

#include <mutex>

/// A mutual-exclusion lock, not recursive: between lock() and unlock() every other thread waits in lock().
class KLT_EXPORT KLTThreadCriticalSection : public KLTThreadLockableResource {
public:
    /// The argument has no meaning; pass 0.
    explicit KLTThreadCriticalSection(int);
    KLTThreadCriticalSection(KLTThreadCriticalSection const&) = delete;
    KLTThreadCriticalSection& operator=(KLTThreadCriticalSection const&) = delete;

    void lock() override;
    /// REQUIRES: this thread holds the lock.
    void unlock() override;

private:
    std::mutex m_mutex;
};

#endif
