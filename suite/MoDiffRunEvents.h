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
    /// Comparison starts, with so many pairs to be compared.
    virtual void started(std::size_t pairs) { static_cast<void>(pairs); }
    /// A pair stands in the record that is taken up; comes before started().
    virtual void takenUp(MoDiffPairResult const& result) { static_cast<void>(result); }
    /// A pair is done; in the order of finishing. A pair that passed without a warning comes with id, format, files,
    /// outcome and seconds only; the record tells the rest.
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
