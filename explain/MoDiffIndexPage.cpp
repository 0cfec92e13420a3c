#include "MoDiffIndexPage.h"

#include "MoDiffHtml.h"
#include "MoDiffOutcomeWords.h"
#include "MoDiffPage.h"

#include <algorithm>
#include <cstdio>

using MoDiffHtml::bytes;
using MoDiffHtml::count;
using MoDiffHtml::number;
using MoDiffHtml::words;

namespace {

std::size_t const kRowsPerBody = 100; // of the table of pairs, which is laid out body by body
std::size_t const kSeenFolders = 12;  // the others are folded
std::size_t const kSeenGroups = 10;
std::size_t const kSeenGroupPairs = 3;
std::size_t const kMostGroupPairs = 50; // the others stand in the table of pairs
std::size_t const kMostLinks = 20;      // to groups that share a change
std::size_t const kMostListed = 500;    // warnings, new files

std::string folderOf(MoDiffPairResult const& pair) {
    return pair.master.substr(0, pair.master.rfind('/') + 1);
}

std::string timeOf(std::time_t time) {
    std::tm parts = {};
    char text[40];
    return gmtime_r(&time, &parts) && std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &parts) > 0 ? text
                                                                                                            : "";
}

std::string seconds(double value) {
    char text[40];
    std::snprintf(text, sizeof text, value < 10 ? "%.2f" : "%.0f", value);
    return text;
}

std::string section(char const* id, std::string const& title, std::string const& body) {
    return std::string("<section aria-labelledby=\"") + id + "\">\n<h2 id=\"" + id + "\" tabindex=\"-1\">" + title +
           "</h2>\n" + body + "</section>\n";
}

/// Items of a list, cut when there are too many.
std::string listOf(std::vector<std::string> const& items) {
    std::string html = "<ul>\n";
    for (std::size_t index = 0; index < std::min(items.size(), kMostListed); ++index)
        html += "<li>" + items[index] + "</li>\n";
    html += "</ul>\n";
    if (items.size() > kMostListed)
        html += "<p class=\"cut\">" + number(items.size() - kMostListed) + " more are in the record.</p>\n";
    return html;
}

std::string groupLink(std::size_t group) {
    std::string const name = std::to_string(group);
    return "<a href=\"#group-" + name + "\">" + name + "</a>";
}

std::string changeOf(MoDiffGroups::Group const& group) {
    if (group.kinds.empty())
        return "no change of texts";
    std::string const title = MoDiffHtml::title(group.kinds.front().title);
    std::size_t const more = group.kinds.size() - 1;
    return more == 0 ? title : title + " <span class=\"more-kinds\">and " + count(more, "more change") + "</span>";
}

using Row = std::pair<std::string, MoDiffTotals>;

std::string breakdownRow(std::string const& what, Row const& row) {
    std::size_t const failures = row.second.getFailures();
    std::string const name = row.first.empty() ? "." : bytes(row.first);
    return "<tr><th scope=\"row\"><a href=\"#pairs\" data-" + what + "=\"" + bytes(row.first) + "\">" + name +
           "</a></th><td>" + number(row.second.getAll()) + "</td><td" + (failures == 0 ? ">" : " class=\"failed\">") +
           number(failures) + "</td><td class=\"share\">" + MoDiffOutcomeWords::bar(row.second) + "</td></tr>\n";
}

std::string breakdownTable(char const* what, std::vector<Row> const& rows, std::size_t begin, std::size_t end) {
    std::string html = std::string("<table class=\"numbers\"><caption>By ") + what +
                       "</caption><thead><tr><th scope=\"col\">" + what +
                       "</th><th scope=\"col\">Pairs</th><th scope=\"col\">Failed</th>"
                       "<td></td></tr></thead><tbody>\n";
    for (std::size_t index = begin; index < end; ++index)
        html += breakdownRow(what, rows[index]);
    return html + "</tbody></table>\n";
}

/// Those with most failures first.
std::string breakdown(char const* what, std::map<std::string, MoDiffTotals> const& counts) {
    std::vector<Row> rows(counts.begin(), counts.end());
    std::stable_sort(rows.begin(), rows.end(), [](Row const& left, Row const& right) {
        return left.second.getFailures() > right.second.getFailures();
    });
    std::size_t const seen = std::min(rows.size(), kSeenFolders);
    std::string html = "<div>" + breakdownTable(what, rows, 0, seen);
    if (seen < rows.size())
        html += "<details><summary>" + count(rows.size() - seen, "more row") + "</summary>" +
                breakdownTable(what, rows, seen, rows.size()) + "</details>\n";
    return html + "</div>\n";
}

} // namespace

MoDiffIndexPage::MoDiffIndexPage(MoDiffPageList const& list, std::time_t recorded)
    : m_list(list), m_recorded(recorded) {
    for (MoDiffPairResult const& pair : list.record().pairs()) {
        m_totals.add(pair.outcome);
        m_formats[pair.format].add(pair.outcome);
        m_folders[folderOf(pair)].add(pair.outcome);
    }
}

std::string MoDiffIndexPage::toHtml() const {
    MoDiffPage page;
    page.title = verdict();
    page.kind = "index";
    page.skipTarget = "pairs";
    page.skipWords = "Skip to the pairs";
    page.body = "<main>\n" + heading() + groups() + breakdowns() + warnings() + newFiles() + pairs() + "</main>\n";
    return page.toHtml();
}

bool MoDiffIndexPage::failsByNewFiles() const {
    return m_list.record().header().newFails && !m_list.record().newFiles().empty();
}

std::string MoDiffIndexPage::verdict() const {
    std::string const all = count(m_totals.getAll(), "pair");
    if (m_totals.getAll() == 0)
        return "Nothing was compared";
    if (m_totals.getFailures() > 0)
        return number(m_totals.getFailures()) + " of " + all + " failed";
    if (failsByNewFiles())
        return "Failed: there are new files";
    return m_totals.getCount(MoDiffOutcome::ePassed) == m_totals.getAll() ? "All " + all + " passed"
                                                                          : all + ", none failed";
}

std::string MoDiffIndexPage::heading() const {
    std::string const& incomplete = m_list.record().incomplete();
    bool const isGood = m_totals.getExitStatus(failsByNewFiles()) == 0 && incomplete.empty();
    std::string html =
        std::string("<header class=\"verdict ") + (isGood ? "good" : "bad") + "\">\n<h1>" + verdict() + "</h1>\n";
    if (!incomplete.empty())
        html += "<p class=\"alarm\">This is not the whole run: " + words(incomplete) + "</p>\n";
    return html + MoDiffOutcomeWords::bar(m_totals) + "\n" + outcomes() + origin() + "</header>\n";
}

std::string MoDiffIndexPage::outcomes() const {
    std::string html = "<ul class=\"outcomes\">\n";
    for (MoDiffOutcome const outcome : MoDiffOutcomeWords::kOrder)
        if (std::size_t const pairs = m_totals.getCount(outcome))
            html += std::string("<li><a href=\"#pairs\" data-outcome=\"") + wordOf(outcome) + "\"><b>" +
                    number(pairs) + "</b> " + MoDiffOutcomeWords::badge(outcome) + "</a></li>\n";
    return html + "</ul>\n";
}

std::string MoDiffIndexPage::origin() const {
    MoDiffRecordPairs const& record = m_list.record();
    std::string html = "<p class=\"origin\">Recorded " + timeOf(m_recorded);
    if (record.end().seconds > 0)
        html += " in " + seconds(record.end().seconds) + " s";
    html += " by modiff " + bytes(record.header().version) + " in <code>" + bytes(record.directory()) + "</code>";
    if (!record.workingDirectory().empty())
        html += "; paths are seen from <code>" + bytes(record.workingDirectory()) + "</code>";
    return html + ".</p>\n";
}

std::string MoDiffIndexPage::groups() const {
    if (m_list.groups().empty())
        return "";
    std::size_t const all = m_list.groups().size();
    std::size_t const seen = std::min(all, kSeenGroups);
    std::string html =
        "<p class=\"hint\">Pairs of a group differ in the same way, so that one decision serves all. <code>" +
        words(m_list.command("review")) + "</code> asks for them one by one.</p>\n" + groupRows(0, seen);
    if (seen < all)
        html += "<details><summary>" + count(all - seen, "smaller group") + "</summary>\n" + groupRows(seen, all) +
                "</details>\n";
    return section("groups", "What differs <span class=\"count\">" + count(all, "group") + "</span>",
                   html + sharedKinds());
}

/// Changes that stand in pairs of several groups.
std::string MoDiffIndexPage::sharedKinds() const {
    std::vector<std::string> items;
    for (MoDiffGroups::SharedKind const& kind : m_list.sharedKinds()) {
        std::string links;
        for (std::size_t at = 0; at < std::min(kind.inGroups.size(), kMostLinks); ++at)
            links += " " + groupLink(kind.inGroups[at] + 1);
        links += kind.inGroups.size() > kMostLinks ? " ..." : "";
        items.push_back(MoDiffHtml::title(kind.title) + " in " + count(kind.pairs, "pair") + " of groups" + links);
    }
    return items.empty() ? ""
                         : "<details class=\"shared\"><summary>" + count(items.size(), "change") +
                               " in several groups</summary>\n" + listOf(items) + "</details>\n";
}

std::string MoDiffIndexPage::groupRows(std::size_t begin, std::size_t end) const {
    std::string html = "<ol class=\"groups\">\n";
    for (std::size_t index = begin; index < end; ++index)
        html += groupRow(index);
    return html + "</ol>\n";
}

std::string MoDiffIndexPage::groupRow(std::size_t index) const {
    MoDiffGroups::Group const& group = m_list.groups()[index];
    std::string items;
    bool isAcceptable = false;
    std::size_t listed = 0;
    for (std::string const& id : group.pairs) {
        MoDiffPairResult const* const pair = m_list.record().find(id);
        if (!pair)
            continue;
        isAcceptable = isAcceptable || m_list.deedFor(*pair).command.find("modiff accept") == 0;
        if (++listed <= kMostGroupPairs)
            items += "<li>" + pairLink(*pair) + remarkOn(*pair) + "</li>";
    }
    if (listed > kMostGroupPairs)
        items += "<li class=\"cut\">" + number(listed - kMostGroupPairs) + " more</li>";
    std::string const name = std::to_string(index + 1);
    std::string html = "<li id=\"group-" + name + "\">\n<p class=\"size\"><b>" + number(group.pairs.size()) +
                       "</b> pair" + (group.pairs.size() == 1 ? "" : "s") + "</p>\n<div><p class=\"change\">" +
                       changeOf(group) + "</p>\n" +
                       (group.pairs.size() > kSeenGroupPairs
                            ? "<details><summary>Its pairs</summary><ul>" + items + "</ul></details>"
                            : "<ul>" + items + "</ul>") +
                       "</div>\n<div class=\"command\"><p>Group " + name + "</p>";
    if (isAcceptable)
        html += "<code>" + words(m_list.groupCommand(index + 1)) + "</code>";
    return html + "</div></li>\n";
}

std::string MoDiffIndexPage::breakdowns() const {
    return section("where", "Where",
                   "<div class=\"breakdowns\">\n" + breakdown("format", m_formats) + breakdown("folder", m_folders) +
                       "</div>\n");
}

std::string MoDiffIndexPage::warnings() const {
    std::vector<std::string> items;
    for (MoDiffPairResult const& pair : m_list.record().pairs())
        for (std::string const& warning : pair.warnings)
            items.push_back(pairLink(pair) + " " + words(warning));
    return items.empty() ? ""
                         : section("warnings", "Warnings <span class=\"count\">" + number(items.size()) + "</span>",
                                   listOf(items));
}

std::string MoDiffIndexPage::newFiles() const {
    std::vector<std::string> items;
    for (std::string const& file : m_list.record().newFiles())
        items.push_back("<code>" + bytes(file) + "</code>");
    return items.empty()
               ? ""
               : section("new", "New files <span class=\"count\">" + number(items.size()) + "</span>",
                         "<p class=\"hint\">No master claims them. <code>" + words(m_list.command("accept")) +
                             " --under FOLDER --new FILE</code> makes one a master.</p>\n" + listOf(items));
}

std::string MoDiffIndexPage::pairs() const {
    std::vector<MoDiffPairResult const*> order;
    for (MoDiffPageList::Item const& item : m_list.items())
        order.push_back(item.pair);
    for (MoDiffPairResult const& pair : m_list.record().pairs())
        if (!m_list.find(pair))
            order.push_back(&pair);
    std::string rows;
    for (std::size_t index = 0; index < order.size(); ++index) {
        rows += index == 0 ? "<tbody>\n" : index % kRowsPerBody == 0 ? "</tbody>\n<tbody>\n" : "";
        rows += pairRow(*order[index]);
    }
    return section("pairs", "Pairs <span class=\"count\">" + number(order.size()) + "</span>",
                   filters() +
                       "<table id=\"table\" class=\"pairs\"><caption>Every pair of the run</caption><thead><tr><th "
                       "scope=\"col\">Outcome</th>"
                       "<th scope=\"col\">Pair</th><th scope=\"col\">Format</th><th scope=\"col\">Group</th>"
                       "<th scope=\"col\">Seconds</th></tr></thead>\n" +
                       rows + (order.empty() ? "" : "</tbody>") + "</table>\n");
}

/// Seen only where the script works.
std::string MoDiffIndexPage::filters() const {
    std::string outcomes;
    for (MoDiffOutcome const outcome : MoDiffOutcomeWords::kOrder)
        if (m_totals.getCount(outcome) > 0)
            outcomes += std::string("<option>") + wordOf(outcome) + "</option>";
    std::string formats;
    for (auto const& format : m_formats)
        formats += "<option>" + bytes(format.first) + "</option>";
    return "<form id=\"filters\" role=\"search\" hidden><label>Text <input type=\"search\" name=\"text\" "
           "autocomplete=\"off\"></label>"
           "<label>Outcome <select name=\"outcome\"><option value=\"\">all</option><option value=\"!\">not "
           "passed</option>" +
           outcomes + "</select></label><label>Format <select name=\"format\"><option value=\"\">all</option>" +
           formats +
           "</select></label><button type=\"reset\">Clear</button><output aria-live=\"polite\"></output></form>\n";
}

std::string MoDiffIndexPage::pairRow(MoDiffPairResult const& pair) const {
    MoDiffPageList::Item const* const item = m_list.find(pair);
    std::string const group = item && item->group > 0 ? groupLink(item->group) : "";
    return "<tr><td>" + MoDiffOutcomeWords::badge(pair.outcome) + "</td><th scope=\"row\">" + pairLink(pair) +
           remarkOn(pair) +
           (pair.warnings.empty()
                ? ""
                : "<small class=\"warning\">" + count(pair.warnings.size(), "warning") + "</small>") +
           "</th><td>" + bytes(pair.format) + "</td><td>" + group + "</td><td>" + seconds(pair.seconds) +
           "</td></tr>\n";
}

/// The path of the master, a link where the pair has a page.
std::string MoDiffIndexPage::pairLink(MoDiffPairResult const& pair) const {
    std::string const folder = folderOf(pair);
    std::string const name =
        "<span class=\"folder\">" + bytes(folder) + "</span>" + bytes(pair.master.substr(folder.size()));
    MoDiffPageList::Item const* const item = m_list.find(pair);
    return item ? "<a href=\"" + item->file + "\">" + name + "</a>" : name;
}

/// What became of a pair since the run, or why it has no verdict.
std::string MoDiffIndexPage::remarkOn(MoDiffPairResult const& pair) const {
    MoDiffPageList::Item const* const item = m_list.find(pair);
    if (!item)
        return "";
    if (item->isDealtWith)
        return "<small class=\"done\">accepted since the run</small>";
    if (MoDiffDecisions::Decision const* const decision = m_list.decisions().find(pair))
        return "<small>" + std::string(decision->choice == MoDiffDecisions::eReject ? "rejected" : "chosen") +
               (decision->remark.empty() ? "" : ": " + words(decision->remark)) + "</small>";
    bool const isPlain = pair.outcome == MoDiffOutcome::eDifferent || pair.outcome == MoDiffOutcome::eMissing;
    return isPlain || pair.detail.empty() ? "" : "<small>" + words(pair.detail) + "</small>";
}
