#ifndef MO_DIFF_LISTENER_H
#define MO_DIFF_LISTENER_H

#include "MoDiffResultFailDiffNormalized.h"
#include "MoDiffResultFailFileMissing.h"
#include "MoDiffResultPass.h"

/// Receives the results of comparisons.
///
/// A result is passed to the notification for its own class. What a listener doesn't override goes on to the
/// notification for the parent class, up to the one for MoDiffResult, which ignores it. A subclass that overrides
/// some of them keeps the others visible with `using MoDiffListener::comparisonNotification;`.
class KLT_EXPORT MoDiffListener {
public:
    MoDiffListener() = default;
    virtual ~MoDiffListener();

    virtual void comparisonNotification(MoDiffResult const& result);
    virtual void comparisonNotification(MoDiffResultPass const& result);
    virtual void comparisonNotification(MoDiffResultFail const& result);
    virtual void comparisonNotification(MoDiffResultFailDiff const& result);
    virtual void comparisonNotification(MoDiffResultFailDiffNormalized const& result);
    virtual void comparisonNotification(MoDiffResultFailFileMissing const& result);
};

#endif
