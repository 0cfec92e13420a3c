#ifndef MO_DIFF_INDEX_PAGE_H
#define MO_DIFF_INDEX_PAGE_H

#include "MoDiffPageList.h"
#include "MoDiffTotals.h"

#include <ctime>
#include <map>
#include <string>
#include <vector>

/// The page that everything begins at: the verdict, what differs alike, counts, warnings, new files, and every pair.
class MoDiffIndexPage {
public:
    /// @param list     must outlive the object
    /// @param recorded when the record was written last
    MoDiffIndexPage(MoDiffPageList const& list, std::time_t recorded);

    /// The whole page. Looks at masters to tell what was accepted since the run.
    std::string toHtml() const;

private:
    using Breakdown = std::map<std::string, MoDiffTotals>;

    bool failsByNewFiles() const;
    std::string verdict() const;
    std::string heading() const;
    std::string origin() const;
    std::string outcomes() const;
    std::string groups() const;
    std::string groupRows(std::size_t begin, std::size_t end) const;
    std::string groupRow(std::size_t index) const;
    std::string sharedKinds() const;
    std::string breakdowns() const;
    std::string warnings() const;
    std::string newFiles() const;
    std::string pairs() const;
    std::string filters() const;
    std::string pairRow(MoDiffPairResult const& pair) const;
    std::string pairLink(MoDiffPairResult const& pair) const;
    std::string remarkOn(MoDiffPairResult const& pair) const;

    MoDiffPageList const& m_list;
    std::time_t m_recorded;
    MoDiffTotals m_totals;
    Breakdown m_formats;
    Breakdown m_folders;
};

#endif
