#ifndef MO_DIFF_SHOW_COMMAND_H
#define MO_DIFF_SHOW_COMMAND_H

#include "MoDiffCommand.h"
#include "MoDiffDecisions.h"
#include "MoDiffDiffText.h"
#include "MoDiffGroupSearch.h"
#include "MoDiffPager.h"
#include "MoDiffRecordOptions.h"

#include <string>
#include <vector>

/// `modiff show`: shows what differs in pairs of a record.
class MoDiffShowCommand : public MoDiffCommand {
public:
    explicit MoDiffShowCommand(CLI::App& parent);

    int run() override;
    bool takesFiles() const override { return false; }

private:
    using Pairs = std::vector<MoDiffPairResult const*>;

    int runTool(Pairs const& pairs) const;
    Pairs named(MoDiffOpenedRecord const& record, MoDiffPairSetups& setups) const;
    void showGroups(MoDiffRecordPairs const& record, MoDiffGroupSearch const& search) const;
    void showFailed(MoDiffRecordPairs const& record, MoDiffPairSetups& setups) const;
    void showPair(MoDiffRecordPairs const& record, MoDiffPairResult const& pair, MoDiffPairSetups& setups) const;
    void showDiff(MoDiffPairResult const& pair, MoDiffPairSetups& setups) const;

    MoDiffRecordOptions m_record;
    std::vector<std::string> m_names;
    std::string m_tool;
    std::size_t m_group = 0;
    bool m_isSideBySide = false;
    bool m_isRaw = false;
    bool m_isListing = false;
    bool m_isMany = false;
    bool m_colours = false;
    std::size_t m_columns = 0;
};

#endif
