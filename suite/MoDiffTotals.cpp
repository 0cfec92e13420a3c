#include "MoDiffTotals.h"

#include <numeric>

std::size_t MoDiffTotals::getAll() const {
    return std::accumulate(m_counts.begin(), m_counts.end(), std::size_t{0});
}

std::size_t MoDiffTotals::getFailures() const {
    return getAll() - getCount(MoDiffOutcome::ePassed) - getCount(MoDiffOutcome::eExpected);
}

int MoDiffTotals::getExitStatus(bool newFails, bool isTrouble) const {
    using Outcome = MoDiffOutcome;
    if (isTrouble || getCount(Outcome::eError) + getCount(Outcome::eCrashed) + getCount(Outcome::eTimeout) +
                             getCount(Outcome::eMemory) >
                         0)
        return 2;
    if (newFails || getFailures() > 0)
        return 1;
    return getAll() == 0 ? 3 : 0;
}
