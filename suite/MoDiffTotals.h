#ifndef MO_DIFF_TOTALS_H
#define MO_DIFF_TOTALS_H

#include "MoDiffPairResult.h"

#include <array>
#include <cstddef>

/// How many pairs had which outcome.
class MoDiffTotals {
public:
    void add(MoDiffOutcome outcome, std::size_t count = 1) { m_counts[static_cast<std::size_t>(outcome)] += count; }

    std::size_t getCount(MoDiffOutcome outcome) const { return m_counts[static_cast<std::size_t>(outcome)]; }
    /// All pairs.
    std::size_t getAll() const;
    /// Those whose outcome is a failure.
    std::size_t getFailures() const;

    /// The exit status of a run that ended by itself: 2 for trouble (error, crashed, timeout, memory) before 1 for
    /// different, missing, unexpectedly passed or newFails, before 3 for nothing compared; 0 when all passed.
    /// @param newFails  whether there are new files and these are to fail
    /// @param isTrouble whether there is trouble beside that of pairs
    int getExitStatus(bool newFails, bool isTrouble = false) const;

    friend bool operator==(MoDiffTotals const& left, MoDiffTotals const& right) {
        return left.m_counts == right.m_counts;
    }

private:
    std::array<std::size_t, kMoDiffOutcomes> m_counts{};
};

#endif
