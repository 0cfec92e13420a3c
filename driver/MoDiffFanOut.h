#ifndef MO_DIFF_FAN_OUT_H
#define MO_DIFF_FAN_OUT_H

#include "MoDiffListener.h"

#include <vector>

/// Passes every result on to several listeners in the order in which they were added: the registry's own set orders
/// them by address, which changes from run to run. Owns none of them.
class MoDiffFanOut : public MoDiffListener {
public:
    void add(MoDiffListener& listener) { m_listeners.push_back(&listener); }

    using MoDiffListener::comparisonNotification;
    /// Every listener hears of the result, also when one before it raises an error; the first error then passes on.
    void comparisonNotification(MoDiffResult const& result) override;

private:
    std::vector<MoDiffListener*> m_listeners;
};

#endif
