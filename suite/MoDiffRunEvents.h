#ifndef MO_DIFF_RUN_EVENTS_H
#define MO_DIFF_RUN_EVENTS_H

#include "MoDiffPairResult.h"

#include <chrono>
#include <cstddef>
#include <string>

/// What a run tells while it goes on; calls come from the thread that started the run.
class MoDiffRunEvents {
public:
    virtual ~MoDiffRunEvents() = default;
    /// Comparison starts.
    virtual void started(std::size_t pairs) { static_cast<void>(pairs); }
    /// A pair is done; in the order of finishing.
    virtual void finished(MoDiffPairResult const& result) { static_cast<void>(result); }
    /// Comes some ten times a second while pairs are compared.
    struct Progress {
        std::size_t done;
        std::size_t all;
        std::string longestRunning; ///< a pair's id; "" when none runs for a second
        std::chrono::milliseconds since;
    };
    virtual void progressed(Progress const& progress) { static_cast<void>(progress); }
};

#endif
