#ifndef MO_DIFF_QPT_LOG_H
#define MO_DIFF_QPT_LOG_H

#include "MoDiffListener.h"

class QPTTestHarness;

/// Turns each result into one check of a test script; a difference of normalized texts also goes to the harness's
/// log as a block of its own, with up to 128 bytes from the first difference on. Subclasses say how a check is
/// recorded and which harness gets the block. May be used from several threads as far as the subclass allows it.
class KLT_EXPORT MoDiffQptLog : public MoDiffListener {
public:
    MoDiffQptLog();
    ~MoDiffQptLog() override;

    using MoDiffListener::comparisonNotification;
    void comparisonNotification(MoDiffResult const& result) override;
    /// Raises KLTAssertError, after the check is recorded, when the harness or one of the texts is null. The
    /// harness's output lock is held while the block is written and is free again whatever is raised.
    void comparisonNotification(MoDiffResultFailDiffNormalized const& result) override;
    void comparisonNotification(MoDiffResultFailFileMissing const& result) override;

    /// Records one check. Called once for each result, before any other output about it and without a lock held.
    /// @param description what the check asserts, also when it failed; valid during the call only
    virtual void logCheck(char const* description, bool passed) = 0;
    /// The harness for the block; not null. It stays its owner's.
    virtual QPTTestHarness* getHarness() = 0;
};

#endif
