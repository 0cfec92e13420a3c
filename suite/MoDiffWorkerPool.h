#ifndef MO_DIFF_WORKER_POOL_H
#define MO_DIFF_WORKER_POOL_H

#include "MoDiffDescriptor.h"
#include "MoDiffWorker.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

/// The processes that compare the pairs of a run. Each pair is told exactly once, whatever becomes of them: one whose
/// process died is told as crashed, one that exceeds a limit is ended with all it started and told so, and another
/// process goes on. Used by one thread, the only one of its process. Errors of the system raise std::system_error.
class MoDiffWorkerPool {
public:
    /// A pair that is done.
    struct Done {
        std::uint32_t index; ///< into the pairs
        MoDiffOutcome outcome;
        bool hasWarnings;
        double seconds;
        std::string_view line; ///< of the record
    };
    using Sink = std::function<void(Done const&)>;

    /// @param pairs    must outlive the pool, as must settings
    /// @param order    indexes of the pairs to be compared, in the order in which they are begun
    /// @param settings of the comparison
    /// @param startLimit the longest that python or a script may take to start
    MoDiffWorkerPool(std::vector<MoDiffPair> const& pairs, std::vector<std::uint32_t> order,
                     MoDiffPairComparison::Settings const& settings, std::chrono::milliseconds startLimit);
    /// Ends whatever still runs.
    ~MoDiffWorkerPool();
    MoDiffWorkerPool(MoDiffWorkerPool const&) = delete;
    MoDiffWorkerPool& operator=(MoDiffWorkerPool const&) = delete;

    /// Hands what has been done to the sink and waits a little. Returns false when there is nothing more to come. A
    /// signal ends the waiting.
    bool step(Sink const& sink);

    /// Lets no more pairs begin; those that run come to their end.
    void stop();
    /// Lets no more pairs begin once so many have failed; from 1.
    void stopAfterFailures(std::uint32_t count) { m_board.stopAfterFailures(count); }
    /// Ends all processes at once.
    void end();

    /// The pair that has been running longest, if any runs.
    struct Running {
        std::uint32_t index;
        std::chrono::milliseconds since;
    };
    std::optional<Running> getLongestRunning() const;

private:
    struct Process {
        pid_t id = 0; ///< 0 for none
        MoDiffDescriptor pipe;
        std::string bytes;                  ///< read and not decoded
        std::optional<std::uint32_t> ended; ///< the place for which it was ended
        MoDiffOutcome reason = MoDiffOutcome::eCrashed;
        std::string detail; ///< in words; "" unless it was ended
    };

    bool startRound();
    void startProcess(std::size_t slot);
    [[noreturn]] void becomeWorker(std::size_t slot, int output);
    std::size_t readAll(Sink const& sink);
    std::size_t decode(Process& process, Sink const& sink);
    void bury(std::size_t slot, Sink const& sink);
    void tellLost(std::size_t slot, int status, Sink const& sink);
    void watchLimits();
    std::string overTime(MoDiffWorkerBoard::Work const& work) const;
    void endFor(std::size_t slot, std::uint32_t place, MoDiffOutcome reason, std::string const& detail);
    void endStrays() const;
    bool isAnyAlive() const;
    void wait(std::size_t frames);

    std::vector<MoDiffPair> const& m_pairs;
    std::vector<std::uint32_t> m_order;
    std::vector<bool> m_isDone; ///< by place in the order
    MoDiffPairComparison::Settings const& m_settings;
    std::vector<char> m_block; ///< for reading
    std::chrono::milliseconds m_startLimit;
    MoDiffWorkerBoard m_board;
    std::vector<Process> m_processes;
    std::vector<pid_t> m_others; ///< children of this process that are none of the pool's
    std::size_t m_vainStarts = 0;
    bool m_isStopped = false;
    std::chrono::steady_clock::time_point m_lastLook;
    std::chrono::microseconds m_nap{};
};

#endif
