#ifndef MO_DIFF_PAGE_LIST_H
#define MO_DIFF_PAGE_LIST_H

#include "MoDiffDecisions.h"
#include "MoDiffGroups.h"
#include "MoDiffRecordPairs.h"

#include <string>
#include <unordered_map>
#include <vector>

/// Which pairs of a record have a page of their own, all that did not pass: group by group, largest first, then those
/// that failed as expected.
class MoDiffPageList {
public:
    struct Item {
        MoDiffPairResult const* pair;
        std::size_t group; ///< its number, from 1; 0 for none
        /// From the index page; the same for a pair in all reports, so that links to it last.
        std::string file;
        bool isDealtWith; ///< the decision about it is carried out
    };

    /// What pages are made of. All must outlive the list.
    struct Sources {
        MoDiffRecordPairs const& record;
        std::vector<MoDiffGroups::Group> const& groups;
        std::vector<MoDiffGroups::SharedKind> const& sharedKinds;
        MoDiffDecisions const& decisions;
        std::string recordWords; ///< by which commands find the record: " --record 'DIR'", or ""
    };
    explicit MoDiffPageList(Sources sources);

    MoDiffRecordPairs const& record() const { return m_sources.record; }
    std::vector<MoDiffGroups::Group> const& groups() const { return m_sources.groups; }
    std::vector<MoDiffGroups::SharedKind> const& sharedKinds() const { return m_sources.sharedKinds; }
    MoDiffDecisions const& decisions() const { return m_sources.decisions; }
    std::vector<Item> const& items() const { return m_items; }
    /// Null for a pair without a page.
    Item const* find(MoDiffPairResult const& pair) const;

    /// What to do about a pair, and the command that does it; both may be empty.
    struct Deed {
        std::string words;
        std::string command;
    };
    Deed deedFor(MoDiffPairResult const& pair) const;
    /// The command that accepts a group.
    std::string groupCommand(std::size_t group) const;
    /// `modiff COMMAND` for the record.
    std::string command(std::string const& words) const { return "modiff " + words + m_sources.recordWords; }

private:
    void add(MoDiffPairResult const& pair, std::size_t group);

    Sources m_sources;
    std::vector<Item> m_items;
    std::unordered_map<MoDiffPairResult const*, std::size_t> m_indexes;
};

#endif
