#ifndef MO_DIFF_GROUPS_H
#define MO_DIFF_GROUPS_H

#include "MoDiffSignature.h"

#include <map>
#include <string>
#include <vector>

/// Pairs with the same difference, so that one decision can serve all.
class MoDiffGroups {
public:
    struct Group {
        std::string signature;
        std::vector<MoDiffChangeKind> kinds; ///< as in its first pair
        std::vector<std::string> pairs;      ///< ids, in the order they were added
    };
    /// A kind of change that stands in pairs of several groups.
    struct SharedKind {
        std::string title;
        std::string signature;
        std::size_t pairs;                 ///< in all groups
        std::vector<std::size_t> inGroups; ///< indexes into groups(), ascending
    };

    void add(std::string const& pair, std::string const& signature, std::vector<MoDiffChangeKind> const& kinds);

    /// Largest first; groups of the same size in the order of their first pairs.
    std::vector<Group> groups() const;
    /// Those in most pairs first.
    std::vector<SharedKind> sharedKinds() const;
    /// "`Page 1 of 3` -> `Page 1/3` in 290 pairs"; with the number of further kinds, if any.
    static std::string titleOf(Group const& group);

private:
    std::vector<Group> m_groups; ///< in the order of their first pairs
    std::map<std::string, std::size_t> m_indexes;
};

#endif
