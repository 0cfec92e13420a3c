#ifndef MO_DIFF_WORKER_FRAME_H
#define MO_DIFF_WORKER_FRAME_H

#include "MoDiffPairResult.h"

#include <cstdint>
#include <string>
#include <string_view>

/// What a worker sends for each pair: a head for the run, and the record's line, which the run only copies. Both
/// processes are the same program, so that the head goes as it lies in memory.
struct MoDiffWorkerFrame {
    std::uint32_t lineLength;
    std::uint32_t place; ///< in the order
    double seconds;
    MoDiffOutcome outcome;
    bool hasWarnings;

    /// A pair that is finished, as bytes.
    static std::string encode(std::uint32_t place, MoDiffPairResult const& result);

    /// Takes the first frame from a text, which is shortened; false when it holds no whole one.
    static bool decode(std::string_view& bytes, MoDiffWorkerFrame& frame, std::string_view& line);
};

#endif
