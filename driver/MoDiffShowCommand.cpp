#include "MoDiffShowCommand.h"

#include "MoDiffConsole.h"
#include "MoDiffSelection.h"
#include "MoDiffShellWord.h"
#include "MoDiffShownText.h"
#include "MoDiffStyledText.h"
#include "MoDiffTerminal.h"
#include "MoDiffTrouble.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <sys/wait.h>
#include <unistd.h>

using MoDiffShownText::escaped;

namespace {

char const kFooter[] =
    "PAIR is the id of a pair, a part of ids, or a glob that meets whole ids; parts and globs mean pairs that did "
    "not\n"
    "pass. Without one, each group of pairs that differ alike is shown by its first pair, largest group first.\n"
    "On a terminal the output goes through $PAGER, or less.\n\n"
    "Exit status: 0 shown; 2 trouble.";

std::size_t const kMostTools = 5;
std::size_t const kWidth = 160; // columns where no terminal tells them
std::string const kIndent(11, ' ');

bool hasNotPassed(MoDiffPairResult const& pair) {
    return pair.outcome != MoDiffOutcome::ePassed;
}

/// The pairs of a group about which nothing is decided yet.
std::vector<std::string> openIds(MoDiffRecordPairs const& record, MoDiffGroups::Group const& group) {
    std::vector<std::string> ids;
    for (std::string const& id : group.pairs)
        if (MoDiffPairResult const* const pair = record.find(id); pair && !MoDiffRecordPairs::isDealtWith(*pair))
            ids.push_back(id);
    return ids;
}

/// A title for so many of a group's pairs.
std::string titleFor(MoDiffGroups::Group group, std::vector<std::string> const& ids) {
    group.pairs = ids;
    return MoDiffGroups::titleOf(group);
}

/// A command line with the files of a pair: %m and %a are replaced, or both are added.
std::string toolCommand(std::string const& tool, MoDiffPairResult const& pair) {
    std::string command;
    bool hasFiles = false;
    for (std::size_t at = 0; at < tool.size(); ++at) {
        bool const isPlace = tool[at] == '%' && at + 1 < tool.size() && (tool[at + 1] == 'm' || tool[at + 1] == 'a');
        command += isPlace ? MoDiffShellWord::quoted(tool[++at] == 'm' ? pair.master : pair.actual)
                           : std::string(1, tool[at]);
        hasFiles = hasFiles || isPlace;
    }
    return hasFiles
               ? command
               : command + " " + MoDiffShellWord::quoted(pair.master) + " " + MoDiffShellWord::quoted(pair.actual);
}

} // namespace

MoDiffShowCommand::MoDiffShowCommand(CLI::App& parent)
    : MoDiffCommand(parent, "show", "Show what differs in pairs of the last run", kFooter), m_record(options()) {
    options().add_option("PAIR", m_names, "Show these pairs")->type_name("")->transform(asGiven());
    options().add_option("--group", m_group, "Show all pairs of a group")->type_name("N");
    options().add_flag("--groups", m_isListing, "List the groups of pairs that differ alike");
    options().add_flag("--side-by-side", m_isSideBySide, "Show both files beside each other");
    options().add_flag("--raw", m_isRaw, "Compare the files as they are, nothing cleansed");
    options()
        .add_option("--tool", m_tool, "Open each pair with a program, such as 'meld %m %a'")
        ->type_name("COMMAND")
        ->check(notEmpty());
    options().add_flag("--many", m_isMany, "With --tool: open more than 5 pairs, too");
}

MoDiffShowCommand::Pairs MoDiffShowCommand::named(MoDiffOpenedRecord const& record, MoDiffPairSetups& setups) const {
    if (m_group != 0 || options().count("--group") > 0)
        return MoDiffGroupSearch(record.pairs, setups).pairsOf(m_group);
    return record.pairs.choose(m_names, hasNotPassed);
}

int MoDiffShowCommand::run() {
    MoDiffOpenedRecord const record = m_record.open();
    MoDiffPairSetups setups(record.configuration);
    m_colours = MoDiffConsole::isColourful();
    m_columns = isatty(STDOUT_FILENO) ? MoDiffTerminal::size().columns : kWidth;
    bool const isNamed = !m_names.empty() || options().count("--group") > 0;
    if (!m_tool.empty())
        return runTool(isNamed ? named(record, setups) : record.pairs.choose({""}, hasNotPassed));
    if (isNamed && !m_isListing) {
        Pairs const pairs = named(record, setups);
        MoDiffPager const pager;
        for (auto pair = pairs.begin(); pair != pairs.end() && !pager.isLeft(); ++pair)
            showPair(record.pairs, **pair, setups);
    } else if (m_isListing) {
        MoDiffGroupSearch const search(record.pairs, setups);
        MoDiffPager const pager;
        showGroups(record.pairs, search);
    } else {
        showFailed(record.pairs, setups);
    }
    return finishOutput(eExitPassed);
}

int MoDiffShowCommand::runTool(Pairs const& pairs) const {
    Pairs shown;
    std::copy_if(pairs.begin(), pairs.end(), std::back_inserter(shown),
                 [](MoDiffPairResult const* pair) { return MoDiffRecordGroups::isExplained(*pair); });
    if (shown.empty() || (shown.size() > kMostTools && !m_isMany)) {
        MoDiffTrouble().report(shown.empty() ? "none of the pairs has two files to open"
                                             : std::to_string(shown.size()) +
                                                   " pairs would be opened, one after the other; --many allows it");
        return eExitTrouble;
    }
    for (MoDiffPairResult const* const pair : shown) {
        std::cout << escaped(pair->id) << std::endl;
        // The status is the tool's own language: many tell a difference by 1.
        int const status =
            std::system(toolCommand(m_tool, *pair).c_str()); // NOLINT(cert-env33-c): what the user typed
        if (status == -1 || (WIFEXITED(status) && WEXITSTATUS(status) >= 126)) {
            MoDiffTrouble().report("cannot run " + m_tool);
            return eExitTrouble;
        }
    }
    return finishOutput(eExitPassed);
}

void MoDiffShowCommand::showGroups(MoDiffRecordPairs const& record, MoDiffGroupSearch const& search) const {
    for (std::size_t index = 0; index < search.groups().size(); ++index) {
        MoDiffGroups::Group const& group = search.groups()[index];
        std::vector<std::string> const ids = openIds(record, group);
        if (ids.empty())
            continue;
        std::string number = "group " + std::to_string(index + 1);
        number.resize(std::max(kIndent.size(), number.size() + 2), ' ');
        std::cout << number << MoDiffShownText::printable(titleFor(group, ids)) << '\n';
        for (std::string const& id : ids)
            std::cout << kIndent << escaped(id) << '\n';
    }
    for (MoDiffGroups::SharedKind const& kind : search.sharedKinds()) {
        std::cout << "shared     " << MoDiffShownText::printable(kind.title) << " in " << kind.pairs
                  << " pairs of groups";
        for (std::size_t const index : kind.inGroups)
            std::cout << ' ' << index + 1;
        std::cout << '\n';
    }
    if (!search.groups().empty())
        std::cout << "next       modiff show --group N" << m_record.words() << ", modiff accept --group N"
                  << m_record.words() << '\n';
}

/// A pair for each group: the others differ alike.
void MoDiffShowCommand::showFailed(MoDiffRecordPairs const& record, MoDiffPairSetups& setups) const {
    MoDiffGroupSearch const search(record, setups);
    MoDiffPager const pager;
    std::size_t left = 0;
    for (std::size_t index = 0; index < search.groups().size() && !pager.isLeft(); ++index) {
        MoDiffGroups::Group const& group = search.groups()[index];
        std::vector<std::string> const ids = openIds(record, group);
        left += ids.size();
        if (ids.empty())
            continue;
        std::string const title = "group " + std::to_string(index + 1) + ": " + titleFor(group, ids);
        std::cout << MoDiffStyledText::shown({{MoDiffStyle::eLabel, MoDiffShownText::printable(title)}}, m_colours)
                  << '\n';
        showPair(record, *record.find(ids.front()), setups);
        for (std::size_t more = 1; more < ids.size(); ++more)
            std::cout << (more == 1 ? "likewise   " : kIndent) << escaped(ids[more]) << '\n';
        std::cout << '\n';
    }
    if (left == 0)
        std::cout << "nothing is left to be decided in " << escaped(record.directory()) << '\n';
    else
        std::cout << "next       modiff review" << m_record.words() << ", or modiff accept --group N"
                  << m_record.words() << '\n';
}

void MoDiffShowCommand::showPair(MoDiffRecordPairs const& record, MoDiffPairResult const& pair,
                                 MoDiffPairSetups& setups) const {
    MoDiffConsole console(std::cout, MoDiffConsole::eById, m_colours);
    console.showLine(pair);
    console.showWarnings(pair);
    MoDiffDecisions const decisions(record.directory());
    if (MoDiffDecisions::Decision const* const decision = decisions.find(pair))
        console.showNote(MoDiffConsole::eNoColour,
                         decision->choice == MoDiffDecisions::eReject ? "rejected" : "chosen", pair.id,
                         decision->remark);
    if (MoDiffRecordPairs::isDealtWith(pair))
        console.showNote(MoDiffConsole::eGreen, "accepted", pair.id, "since the run");
    else if (MoDiffRecordGroups::isExplained(pair))
        showDiff(pair, setups);
    else if (!pair.output.empty())
        console.show(pair);
    std::cout << '\n';
}

void MoDiffShowCommand::showDiff(MoDiffPairResult const& pair, MoDiffPairSetups& setups) const {
    try {
        MoDiffPairExplanation::Options raw;
        raw.raw = m_isRaw;
        MoDiffDiffText::Options look;
        look.sideBySide = m_isSideBySide;
        look.width = m_columns;
        look.brackets = !m_colours;
        MoDiffDiffText::write(
            MoDiffRecordGroups::explain(pair, setups, raw), look,
            [this](MoDiffStyledLine const& line) { std::cout << MoDiffStyledText::shown(line, m_colours) << '\n'; });
    } catch (std::exception const& error) {
        std::cout << "note       cannot show what differs: " << escaped(error.what()) << '\n';
    }
}
