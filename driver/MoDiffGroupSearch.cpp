#include "MoDiffGroupSearch.h"

#include "MoDiffSelection.h"
#include "MoDiffStatusLine.h"

#include <iostream>

MoDiffGroupSearch::MoDiffGroupSearch(MoDiffRecordPairs const& record, MoDiffPairSetups& setups) : m_record(record) {
    MoDiffStatusLine line(std::cout, MoDiffStatusLine::suitableMode());
    MoDiffGroups const found =
        MoDiffRecordGroups::find(record, setups, [&](std::size_t done, std::size_t all, std::string const& id) {
            line.show("grouping " + std::to_string(done) + "/" + std::to_string(all) + "  ", id);
        });
    m_groups = found.groups();
    m_sharedKinds = found.sharedKinds();
}

std::vector<MoDiffPairResult const*> MoDiffGroupSearch::pairsOf(std::size_t number) const {
    if (number < 1 || number > m_groups.size())
        throw MoDiffSelectionError("there is no group " + std::to_string(number) + " among " +
                                   std::to_string(m_groups.size()) + "; `modiff show --groups` lists them");
    std::vector<MoDiffPairResult const*> pairs;
    for (std::string const& id : m_groups[number - 1].pairs)
        if (MoDiffPairResult const* const pair = m_record.find(id))
            pairs.push_back(pair);
    return pairs;
}
