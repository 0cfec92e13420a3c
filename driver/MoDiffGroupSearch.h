#ifndef MO_DIFF_GROUP_SEARCH_H
#define MO_DIFF_GROUP_SEARCH_H

#include "MoDiffRecordGroups.h"

#include <string>
#include <vector>

/// The groups of a record as commands show and number them.
class MoDiffGroupSearch {
public:
    /// Finds the groups; tells how far it has got when that takes a while.
    MoDiffGroupSearch(MoDiffRecordPairs const& record, MoDiffPairSetups& setups);

    std::vector<MoDiffGroups::Group> const& groups() const { return m_groups; }
    std::vector<MoDiffGroups::SharedKind> const& sharedKinds() const { return m_sharedKinds; }
    /// The pairs of a group, by its number from 1 on. Raises MoDiffSelectionError.
    std::vector<MoDiffPairResult const*> pairsOf(std::size_t number) const;

private:
    MoDiffRecordPairs const& m_record;
    std::vector<MoDiffGroups::Group> m_groups;
    std::vector<MoDiffGroups::SharedKind> m_sharedKinds;
};

#endif
