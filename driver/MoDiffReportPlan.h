#ifndef MO_DIFF_REPORT_PLAN_H
#define MO_DIFF_REPORT_PLAN_H

#include "MoDiffPlan.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

/// The pairs of some reports of one format, in the order of the reports. A pair that several of them have is compared
/// once.
class MoDiffReportPlan {
public:
    struct Report {
        std::string name;
        std::string glob;               ///< where its masters are looked for
        std::vector<std::size_t> pairs; ///< indexes into those of the plan
        std::string trouble;            ///< why its masters cannot be looked for; "" when they can
        /// Whether all of its masters are those of another report whose name begins with its own.
        bool isOnlyLonger = false;
    };

    MoDiffReportPlan(MoDiffFormatRow const& format, MoDiffEngineSettings const& settings,
                     std::vector<std::string> const& reports);
    MoDiffReportPlan(MoDiffReportPlan const&) = delete;
    MoDiffReportPlan& operator=(MoDiffReportPlan const&) = delete;

    MoDiffPlan const& getPlan() const { return m_plan; }
    std::vector<Report> const& getReports() const { return m_reports; }
    /// As seen from the working directory.
    std::string const& getOutputDirectory() const { return m_outputDirectory; }
    /// The index of a pair among those of the plan.
    std::size_t indexOf(std::string const& id) const { return m_indexes.at(id); }

private:
    void add(MoDiffFileEngine const& engine, std::string const& report);
    std::size_t addPair(MoDiffFileEngine const& engine, std::string const& master);

    MoDiffPlan m_plan;
    std::vector<Report> m_reports;
    std::string m_outputDirectory;
    std::unordered_map<std::string, std::size_t> m_indexes; ///< by id
};

#endif
