#ifndef MO_DIFF_WORKER_H
#define MO_DIFF_WORKER_H

#include "MoDiffPairComparison.h"
#include "MoDiffWorkerBoard.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// What a process does that was forked to compare pairs.
class MoDiffWorker {
public:
    struct Work {
        std::vector<MoDiffPair> const* pairs;
        std::vector<std::uint32_t> const* order; ///< indexes into pairs
        MoDiffWorkerBoard* board;
        MoDiffPairComparison::Settings const* settings;
    };

    /// @param slot   of the board
    /// @param output gets a frame for each pair
    MoDiffWorker(Work const& work, std::size_t slot, int output) : m_work(work), m_slot(slot), m_output(output) {}

    /// Compares as long as there are pairs and ends the process. It is a process group of its own by then, ends with
    /// the process that started it and takes signals as a new program does.
    /// @param parent the process that started it
    [[noreturn]] void run(pid_t parent);

private:
    void prepare(pid_t parent) const;
    void limitMemory() const;
    void compareAll() const;
    void send(std::string_view bytes) const;

    Work m_work;
    std::size_t m_slot;
    int m_output;
};

#endif
