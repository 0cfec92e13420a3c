#include "MoDiffPairStates.h"

#include <cerrno>

namespace {

bool isSame(timespec const& left, timespec const& right) {
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

} // namespace

MoDiffPairStates::File::File(std::string const& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        error = errno;
        return;
    }
    device = status.st_dev;
    number = status.st_ino;
    size = status.st_size;
    modified = status.st_mtim;
    changed = status.st_ctim;
}

bool MoDiffPairStates::File::operator==(File const& other) const {
    return error == other.error && device == other.device && number == other.number && size == other.size &&
           isSame(modified, other.modified) && isSame(changed, other.changed);
}

MoDiffPairStates::MoDiffPairStates(MoDiffPlan const& plan) {
    m_pairs.reserve(plan.selected.size());
    for (std::size_t const index : plan.selected) {
        MoDiffPair const& pair = plan.pairs[index];
        std::string warnings;
        for (std::string const& warning : pair.warnings)
            warnings.append(warning).append("\n");
        m_pairs.emplace(pair.id, Pair{File(pair.master), File(pair.actual), warnings});
    }
}

std::set<std::string> MoDiffPairStates::changedSince(MoDiffPairStates const& before) const {
    std::set<std::string> ids;
    for (auto const& [id, pair] : m_pairs) {
        auto const old = before.m_pairs.find(id);
        bool const isUnchanged = old != before.m_pairs.end() && old->second.master == pair.master &&
                                 old->second.actual == pair.actual && old->second.warnings == pair.warnings;
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
