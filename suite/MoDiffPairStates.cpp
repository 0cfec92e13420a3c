#include "MoDiffPairStates.h"

MoDiffPairStates::MoDiffPairStates(MoDiffPlan const& plan) {
    m_pairs.reserve(plan.selected.size());
    for (std::size_t const index : plan.selected) {
        MoDiffPair const& pair = plan.pairs[index];
        std::string warnings;
        for (std::string const& warning : pair.warnings)
            warnings.append(warning).append("\n");
        m_pairs.emplace(pair.id, Pair{MoDiffFileState(pair.master), MoDiffFileState(pair.actual), warnings});
    }
}

std::set<std::string> MoDiffPairStates::changedSince(MoDiffPairStates const& before) const {
    std::set<std::string> ids;
    for (auto const& [id, pair] : m_pairs) {
        auto const old = before.m_pairs.find(id);
        bool const isUnchanged = old != before.m_pairs.end() && old->second.master.isUntouched(pair.master) &&
                                 old->second.actual.isUntouched(pair.actual) && old->second.warnings == pair.warnings;
        if (!isUnchanged)
            ids.insert(id);
    }
    return ids;
}

std::set<std::string> MoDiffPairStates::goneSince(MoDiffPairStates const& before) const {
    std::set<std::string> ids;
    for (auto const& [id, pair] : before.m_pairs)
        if (m_pairs.count(id) == 0)
            ids.insert(id);
    return ids;
}
