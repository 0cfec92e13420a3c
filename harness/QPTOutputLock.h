#ifndef QPT_OUTPUT_LOCK_H
#define QPT_OUTPUT_LOCK_H

#include "QPTTestHarness.h"

/// Holds the harness's output lock for its scope: { QPTOutputLock const lock(harness); ...several lines... }
/// The harness must outlive it, so no script may end inside.
class KLT_EXPORT QPTOutputLock {
public:
    [[nodiscard]] explicit QPTOutputLock(QPTTestHarness& harness) : m_harness(harness) { m_harness.lockOutput(1); }
    ~QPTOutputLock() { m_harness.lockOutput(0); }
    QPTOutputLock(QPTOutputLock const&) = delete;
    QPTOutputLock& operator=(QPTOutputLock const&) = delete;

private:
    QPTTestHarness& m_harness;
};

#endif
