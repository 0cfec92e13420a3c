#ifndef MO_DIFF_AUDIT_COMMAND_H
#define MO_DIFF_AUDIT_COMMAND_H

#include "MoDiffAudit.h"
#include "MoDiffCommand.h"
#include "MoDiffMutations.h"
#include "MoDiffRecordOptions.h"

#include <string>
#include <vector>

/// `modiff audit`: tells how much of the files of a record nobody compares.
class MoDiffAuditCommand : public MoDiffCommand {
public:
    explicit MoDiffAuditCommand(CLI::App& parent);

    int run() override;

private:
    using Pairs = std::vector<MoDiffPairResult const*>;

    Pairs choose(MoDiffRecordPairs const& record) const;
    int mutate(Pairs const& pairs, MoDiffPairSetups& setups, MoDiffSuiteConfiguration const& configuration,
               MoDiffAudit const& audit);

    MoDiffRecordOptions m_record;
    std::vector<std::string> m_formats;
    std::size_t m_most = 20;
    bool m_isJson = false;
    MoDiffMutations::Options m_mutations;
};

#endif
