#ifndef MO_DIFF_WORKER_BOARD_H
#define MO_DIFF_WORKER_BOARD_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>

/// Memory that a run shares with its workers: which place in the order comes next, and at which place each worker is.
/// It survives the death of any of them. Made before they are forked.
class MoDiffWorkerBoard {
public:
    /// @param workers how many slots there are
    explicit MoDiffWorkerBoard(std::size_t workers);
    ~MoDiffWorkerBoard();
    MoDiffWorkerBoard(MoDiffWorkerBoard const&) = delete;
    MoDiffWorkerBoard& operator=(MoDiffWorkerBoard const&) = delete;

    /// Begins an order anew.
    void restart();
    /// Gives a worker its next place, which is then in its slot; none when the order is done or work is to stop.
    std::optional<std::uint32_t> claim(std::size_t worker, std::size_t count);
    /// What a worker's place needs is being started, or has been; its time begins anew with either.
    void noteStart(std::size_t worker, bool isStarting);
    /// The pair of a worker's place has been told.
    void release(std::size_t worker);
    /// How many places are left to be claimed.
    std::size_t countLeft(std::size_t count) const;
    bool isOpen(std::size_t count) const { return countLeft(count) > 0; }
    /// Lets no more places be claimed.
    void stop();
    /// Lets no more places be claimed once so many pairs have failed; from 1.
    void stopAfterFailures(std::uint32_t count);
    /// A pair has failed.
    void countFailure();

    struct Work {
        std::uint32_t place;
        std::uint32_t milliseconds; ///< since it was claimed, or since noteStart()
        bool isStarting;
    };
    /// What a worker is at; none when it is at nothing.
    std::optional<Work> look(std::size_t worker) const;

private:
    struct Slot {
        std::atomic<std::uint32_t> place; ///< from 1; 0 for none
        std::atomic<std::uint32_t> start; ///< in milliseconds of the monotonic clock, modulo 2 to the 32nd
        std::atomic<bool> isStarting;
    };
    struct Shared {
        std::atomic<std::uint32_t> next;
        std::atomic<bool> stopped;
        std::atomic<std::uint32_t> failuresLeft; ///< until no more places are to be claimed; 0 for without end
        Slot slots[1];                           ///< as many as there are workers
    };
    static_assert(std::atomic<std::uint32_t>::is_always_lock_free, "processes share no locks");

    static std::size_t sizeFor(std::size_t workers);

    std::size_t m_size;
    Shared* m_shared;
};

#endif
