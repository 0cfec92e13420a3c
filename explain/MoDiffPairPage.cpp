#include "MoDiffPairPage.h"

#include "MoDiffContentHash.h"
#include "MoDiffDiffTable.h"
#include "MoDiffHtml.h"
#include "MoDiffOutcomeWords.h"
#include "MoDiffPage.h"
#include "MoDiffRecordGroups.h"
#include "MoDiffRenderedLook.h"

#include <algorithm>

using MoDiffHtml::bytes;
using MoDiffHtml::words;

namespace {

bool isAsRecorded(std::string const& path, std::string const& hash) {
    auto const now = MoDiffContentHash::ofFile(path);
    return now && now->digits == hash;
}

std::string list(std::vector<std::string> const& texts, char const* kind) {
    std::string items;
    for (std::string const& text : texts)
        items += "<li>" + words(text) + "</li>";
    return items.empty() ? "" : std::string("<ul class=\"") + kind + "\">" + items + "</ul>\n";
}

std::string command(std::string const& what, std::string const& command) {
    return "<div class=\"command\"><p>" + words(what) + "</p>" +
           (command.empty() ? "" : "<code>" + words(command) + "</code>") + "</div>\n";
}

std::string excerpt(char const* side, std::string const& before, std::string const& after, char const* mark) {
    return std::string("<tr><th scope=\"row\">") + side + "</th><td>" + bytes(before) + "<" + mark + ">" +
           bytes(after) + "</" + mark + "></td></tr>\n";
}

std::string fact(char const* name, std::string const& value) {
    return value.empty() ? "" : std::string("<dt>") + name + "</dt><dd>" + value + "</dd>\n";
}

} // namespace

MoDiffPairPage::MoDiffPairPage(MoDiffPageList const& list, MoDiffPairSetups& setups, std::size_t index, Room room)
    : m_list(list), m_setups(setups), m_index(index), m_pair(*list.items()[index].pair),
      m_group(list.items()[index].group), m_room(room) {
}

std::string MoDiffPairPage::toHtml() {
    m_trouble = findStaleness();
    if (m_trouble.empty() && MoDiffRecordGroups::isExplained(m_pair)) {
        try {
            m_explanation.emplace(MoDiffRecordGroups::explain(m_pair, m_setups, {}));
        } catch (std::exception const& error) {
            m_trouble = std::string("What differs cannot be shown: ") + error.what();
        }
    }
    std::string const shownDifferences = differences();
    std::string const shownLook = look();
    std::string const shownHeading = heading();
    m_explanation.reset(); // both files' memory serves to put the page together
    m_size = {shownDifferences.size(), shownLook.size()};
    MoDiffPage page;
    page.title = m_pair.id.substr(m_pair.id.rfind('/') + 1) + ": " + wordOf(m_pair.outcome);
    page.kind = "pair";
    page.skipTarget = "differences";
    page.skipWords = "Skip to the differences";
    page.hasFrames = !shownLook.empty();
    page.body =
        navigation() + "<main>\n" + shownHeading + deeds() + shownDifferences + shownLook + facts() + "</main>\n";
    return page.toHtml();
}

std::string MoDiffPairPage::link(std::size_t index, char const* relation, char const* text) const {
    if (index >= m_list.items().size())
        return std::string("<span>") + text + "</span>";
    std::string const& file = m_list.items()[index].file;
    return "<a rel=\"" + std::string(relation) + "\" href=\"" + file.substr(file.find('/') + 1) + "\">" + text +
           "</a>";
}

std::string MoDiffPairPage::navigation() const {
    return "<nav class=\"bar\" aria-label=\"Pairs\"><a rel=\"up\" href=\"../index.html\">All pairs</a>"
           "<span class=\"place-in\">" +
           MoDiffHtml::number(m_index + 1) + " of " + MoDiffHtml::number(m_list.items().size()) + "</span>" +
           link(m_index - 1, "prev", "Previous") + link(m_index + 1, "next", "Next") + "</nav>\n";
}

std::string MoDiffPairPage::heading() const {
    bool const isShown = m_explanation && m_pair.outcome == MoDiffOutcome::eDifferent; // better than in a sentence
    std::size_t const name = m_pair.master.rfind('/') + 1;
    std::vector<std::string> labels;
    std::vector<std::string> notes;
    if (m_explanation) {
        for (MoDiffLabel const& label : m_explanation->labels())
            labels.push_back(label.words);
        notes = m_explanation->notes();
    }
    if (MoDiffDecisions::Decision const* const decision = m_list.decisions().find(m_pair))
        notes.push_back((decision->choice == MoDiffDecisions::eReject ? "Rejected" : "Chosen to be accepted") +
                        (decision->remark.empty() ? std::string(".") : ": " + decision->remark));
    if (!m_list.record().incomplete().empty())
        notes.push_back("This is not the whole run: " + m_list.record().incomplete());
    return "<header>\n<p>" + MoDiffOutcomeWords::badge(m_pair.outcome) + " <span class=\"format\">" +
           bytes(m_pair.format) + "</span></p>\n<h1><span class=\"folder\">" + bytes(m_pair.master.substr(0, name)) +
           "</span>" + bytes(m_pair.master.substr(name)) + "</h1>\n" +
           (m_pair.detail.empty() || isShown ? "" : "<p class=\"detail\">" + words(m_pair.detail) + "</p>\n") +
           list(labels, "labels") + list(notes, "notes") + list(m_pair.warnings, "warnings") + "</header>\n";
}

std::string MoDiffPairPage::deeds() const {
    MoDiffPageList::Deed const deed = m_list.deedFor(m_pair);
    std::string html = command(deed.words, deed.command);
    if (m_group != 0 && m_list.groups()[m_group - 1].pairs.size() > 1 &&
        deed.command.find(" accept") != std::string::npos)
        html += command("Accept group " + std::to_string(m_group) + ", all " +
                            MoDiffHtml::count(m_list.groups()[m_group - 1].pairs.size(), "pair") +
                            " that differ in this way",
                        m_list.groupCommand(m_group));
    return "<section class=\"deeds\" aria-label=\"What can be done\">\n" + html + "</section>\n";
}

std::string MoDiffPairPage::differences() {
    std::string const trouble =
        m_trouble.empty() ? "" : "<p class=\"alarm\" role=\"status\">" + words(m_trouble) + "</p>\n";
    return "<section id=\"differences\" aria-labelledby=\"what\" tabindex=\"-1\">\n" +
           (m_explanation ? explained(*m_explanation)
                          : "<h2 id=\"what\">What the record tells</h2>\n" + trouble + recorded()) +
           "</section>\n";
}

std::string MoDiffPairPage::explained(MoDiffPairExplanation const& explanation) {
    MoDiffDiffTable table(explanation, m_room.differences);
    std::string const html = table.toHtml();
    std::size_t const hunks = explanation.hunks().size();
    return "<h2 id=\"what\">What differs" +
           (hunks == 0 ? "" : " <span class=\"count\">" + MoDiffHtml::count(hunks, "place") + "</span>") + "</h2>\n" +
           html;
}

/// For pairs whose files cannot be shown, what the run saw of them.
std::string MoDiffPairPage::recorded() const {
    std::string html;
    if (auto const& difference = m_pair.difference)
        html += "<table class=\"excerpts\"><caption>Where the texts part, as the run saw them</caption><tbody>\n" +
                excerpt("Master", difference->before.master, difference->after.master, "del") +
                excerpt("Actual", difference->before.actual, difference->after.actual, "ins") + "</tbody></table>\n";
    if (!m_pair.output.empty())
        html += "<pre class=\"words\" tabindex=\"0\" aria-label=\"What was told\">" +
                MoDiffHtml::lines(m_pair.output) + "</pre>\n";
    return html.empty()
               ? "<p class=\"empty\">" +
                     std::string(m_pair.detail.empty() ? wordOf(m_pair.outcome) : words(m_pair.detail)) + "</p>\n"
               : html;
}

std::string MoDiffPairPage::look() const {
    std::string const figures = m_explanation ? MoDiffRenderedLook(m_pair, *m_explanation, m_room.look).toHtml() : "";
    return figures.empty() ? ""
                           : "<section aria-labelledby=\"look\">\n<h2 id=\"look\">How it looks</h2>\n"
                             "<p class=\"hint\">Without scripts and without what would have to be fetched.</p>\n" +
                                 figures + "</section>\n";
}

std::string MoDiffPairPage::facts() const {
    auto const side = [this](std::string const& path, std::string const& hash, std::uint64_t size) {
        return bytes(path) + (m_pair.bytes && !hash.empty() ? ", " + MoDiffHtml::count(size, "byte") : "");
    };
    std::string hidden;
    for (MoDiffPatternCount const& pattern : m_pair.patterns)
        hidden += "<tr><th scope=\"row\">" + bytes(pattern.name) + "</th><td>" +
                  MoDiffHtml::number(pattern.bytes.master) + "</td><td>" + MoDiffHtml::number(pattern.bytes.actual) +
                  "</td></tr>\n";
    MoDiffBothSides<std::uint64_t> const sizes = m_pair.bytes.value_or(MoDiffBothSides<std::uint64_t>());
    std::string html = "<section aria-labelledby=\"facts\">\n<h2 id=\"facts\">The pair</h2>\n<dl>\n" +
                       fact("Master", side(m_pair.master, m_pair.hash.master, sizes.master)) +
                       fact("Actual", side(m_pair.actual, m_pair.hash.actual, sizes.actual)) +
                       fact("Seen from", bytes(m_list.record().workingDirectory())) + fact("Id", bytes(m_pair.id)) +
                       fact("All differences", bytes(m_pair.resultFile)) + "</dl>\n";
    if (!hidden.empty())
        html += "<details><summary>What cleansing hides from the comparison</summary>\n<table "
                "class=\"numbers\"><thead><tr>"
                "<th scope=\"col\">Pattern</th><th scope=\"col\">Bytes of the master</th><th scope=\"col\">of the "
                "actual</th>"
                "</tr></thead><tbody>\n" +
                hidden + "</tbody></table></details>\n";
    return html + "</section>\n";
}

/// Says when the files are not those that the run compared; "" when they are, or when it does not matter.
std::string MoDiffPairPage::findStaleness() const {
    if (!MoDiffRecordGroups::isExplained(m_pair))
        return "";
    if (m_list.items()[m_index].isDealtWith)
        return "Accepted since the run: the master is what the actual file was. What follows is what the run saw.";
    bool const isMasterOld = !isAsRecorded(m_pair.master, m_pair.hash.master);
    bool const isActualOld = !isAsRecorded(m_pair.actual, m_pair.hash.actual);
    if (!isMasterOld && !isActualOld)
        return "";
    return std::string(isMasterOld && isActualOld ? "Both files have"
                       : isMasterOld              ? "The master has"
                                                  : "The actual file has") +
           " changed since the run, or cannot be read. What follows is what the run saw.";
}
