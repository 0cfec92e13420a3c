#ifndef MO_DIFF_ENGINE_H
#define MO_DIFF_ENGINE_H

#include "KLTExport.h"

#include <set>

class MoDiffListener;

/// Verifies produced files of one kind. Used from one thread at a time.
class KLT_EXPORT MoDiffEngine {
public:
    virtual ~MoDiffEngine();

    /// Verifies an actual file and delivers every result to every listener, in the set's order.
    /// @param actualFileName not null
    /// Errors raised by listeners and comparisons pass through.
    virtual void verifyOutput(std::set<MoDiffListener*> const& listeners, char const* actualFileName) const = 0;
};

#endif
