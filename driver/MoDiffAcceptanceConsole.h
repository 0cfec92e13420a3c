#ifndef MO_DIFF_ACCEPTANCE_CONSOLE_H
#define MO_DIFF_ACCEPTANCE_CONSOLE_H

#include "MoDiffConsole.h"
#include "MoDiffRecordOptions.h"
#include "MoDiffVerifiedAcceptance.h"

#include <array>
#include <cstddef>
#include <iosfwd>
#include <vector>

/// Carries out decisions about pairs of a record and shows what came of each.
class MoDiffAcceptanceConsole {
public:
    using Action = MoDiffAcceptanceJournal::Action;
    using Requests = std::vector<MoDiffAcceptance::Request>;
    using Answers = std::vector<MoDiffAcceptance::Answer>;

    /// @param out    kept; must outlive this object
    /// @param record likewise
    MoDiffAcceptanceConsole(std::ostream& out, MoDiffOpenedRecord const& record);

    /// Makes requests of pairs; those with which this cannot be done are shown as refused.
    Requests request(Action action, std::vector<MoDiffPairResult const*> const& pairs);
    /// Shows why something was not even asked for.
    void refuse(std::string const& subject, std::string const& reason);

    /// Finishes an interrupted acceptance, carries out the requests and shows how many came to what.
    /// @return the exit status: 0 all accepted, 1 something was refused, 2 trouble
    int perform(Requests const& requests, MoDiffAcceptance::Options const& options);

private:
    void show(MoDiffAcceptance::Answer const& answer, bool dryRun);
    void forgetDecisions(Answers const& answers) const;
    void showEnd(bool dryRun);

    std::ostream& m_out;
    MoDiffOpenedRecord const& m_record;
    MoDiffConsole m_console;
    std::array<std::size_t, 4> m_counts{}; ///< by state
};

#endif
