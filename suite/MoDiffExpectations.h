#ifndef MO_DIFF_EXPECTATIONS_H
#define MO_DIFF_EXPECTATIONS_H

#include "MoDiffPlan.h"
#include "MoDiffSuiteConfiguration.h"

#include <string>
#include <unordered_map>

/// The differences that the configuration expects, by the pairs of a plan.
class MoDiffExpectations {
public:
    /// Raises MoDiffConfigurationError for a rule that meets no pair of a whole plan, selected or not.
    /// @param configuration must outlive this object
    /// @param today         YYYY-MM-DD; a rule whose `until` is not later no longer counts
    MoDiffExpectations(MoDiffSuiteConfiguration const& configuration, MoDiffPlan const& plan,
                       std::string const& today = localDate());

    /// Why a pair is expected to be different or missing; null when it is not. Of several rules the first counts.
    std::string const* reasonFor(MoDiffPair const& pair) const;

    /// Today's date in the local time zone, YYYY-MM-DD.
    static std::string localDate();

private:
    std::unordered_map<std::string, MoDiffExpectedDifference const*> m_rules; ///< by id
};

#endif
