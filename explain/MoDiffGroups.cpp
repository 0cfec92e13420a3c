#include "MoDiffGroups.h"

#include <algorithm>

void MoDiffGroups::add(std::string const& pair, std::string const& signature,
                       std::vector<MoDiffChangeKind> const& kinds) {
    auto const [known, isNew] = m_indexes.emplace(signature, m_groups.size());
    if (isNew)
        m_groups.push_back({signature, kinds, {}});
    m_groups[known->second].pairs.push_back(pair);
}

std::vector<MoDiffGroups::Group> MoDiffGroups::groups() const {
    std::vector<Group> sorted = m_groups;
    std::stable_sort(sorted.begin(), sorted.end(), [](Group const& first, Group const& second) {
        return first.pairs.size() > second.pairs.size();
    });
    return sorted;
}

std::vector<MoDiffGroups::SharedKind> MoDiffGroups::sharedKinds() const {
    std::vector<Group> const sorted = groups();
    std::map<std::string, SharedKind> kinds;
    for (std::size_t index = 0; index < sorted.size(); ++index) {
        for (MoDiffChangeKind const& kind : sorted[index].kinds) {
            SharedKind& shared =
                kinds.emplace(kind.signature, SharedKind{kind.title, kind.signature, 0, {}}).first->second;
            shared.pairs += sorted[index].pairs.size();
            shared.inGroups.push_back(index);
        }
    }
    std::vector<SharedKind> result;
    for (auto const& [signature, kind] : kinds)
        if (kind.inGroups.size() > 1)
            result.push_back(kind);
    std::stable_sort(result.begin(), result.end(),
                     [](SharedKind const& first, SharedKind const& second) { return first.pairs > second.pairs; });
    return result;
}

std::string MoDiffGroups::titleOf(Group const& group) {
    std::string title = group.kinds.empty() ? "no change of texts" : group.kinds.front().title;
    if (group.kinds.size() > 1)
        title += " and " + std::to_string(group.kinds.size() - 1) + " more";
    return title + " in " + std::to_string(group.pairs.size()) + (group.pairs.size() == 1 ? " pair" : " pairs");
}
