#ifndef MO_DIFF_AUDIT_CONSOLE_H
#define MO_DIFF_AUDIT_CONSOLE_H

#include "MoDiffAudit.h"
#include "MoDiffMutations.h"

#include <iosfwd>
#include <string>
#include <vector>

/// Shows an audit in tables for people. Everything that comes from files and names is escaped.
class MoDiffAuditConsole {
public:
    /// @param out  kept; must outlive this object
    /// @param most folders, pairs and rests; what is more is counted
    MoDiffAuditConsole(std::ostream& out, std::size_t most) : m_out(out), m_most(most) {}

    void show(MoDiffAudit const& audit);
    void show(MoDiffMutations::Outcomes const& outcomes);
    /// Names pairs of whose masters nothing was used.
    void showChanged(std::vector<std::string> const& ids);

private:
    using Row = std::vector<std::string>;
    using NamedAmount = std::pair<std::string, MoDiffAudit::Amount>;

    void showFormats(MoDiffAudit const& audit);
    void showAmounts(char const* title, MoDiffAudit::Amounts const& amounts);
    void showDifferences(std::vector<MoDiffAudit::Difference> const& differences);
    void showPlace(MoDiffBothSides<std::string> const& files, MoDiffAudit::Place const& place);
    void showRests(std::vector<MoDiffAudit::Rest> const& rests);
    void showTable(std::vector<Row> const& rows);
    void showMore(std::size_t all, char const* what);

    std::ostream& m_out;
    std::size_t m_most;
};

#endif
