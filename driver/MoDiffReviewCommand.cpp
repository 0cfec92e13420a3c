#include "MoDiffReviewCommand.h"

#include "MoDiffAcceptanceConsole.h"
#include "MoDiffConsole.h"
#include "MoDiffDiffText.h"
#include "MoDiffGroupSearch.h"
#include "MoDiffInterrupt.h"
#include "MoDiffShownText.h"
#include "MoDiffTrouble.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <sstream>

namespace {

char const kFooter[] = "Nothing is written to masters before the end is confirmed. Leaving keeps the decisions "
                       "beside the record for the\n"
                       "next time; what is rejected stays failing, with the remark.\n\n"
                       "Exit status: 0 nothing was to be accepted, or all was; 1 something was refused; 2 trouble. A "
                       "signal ends with 128\n"
                       "and its number.";

std::vector<MoDiffStyledLine> linesOf(MoDiffPairResult const& pair, MoDiffPairSetups& setups) {
    std::vector<MoDiffStyledLine> lines;
    if (!pair.detail.empty())
        lines.push_back({{MoDiffStyle::eContext, MoDiffShownText::printable(pair.detail)}});
    for (std::string const& warning : pair.warnings)
        lines.push_back({{MoDiffStyle::eNote, MoDiffShownText::escaped(warning)}});
    if (!MoDiffRecordGroups::isExplained(pair)) {
        std::istringstream output(pair.output);
        for (std::string line; std::getline(output, line);)
            lines.push_back({{MoDiffStyle::eContext, MoDiffShownText::escaped(line)}});
        return lines;
    }
    try {
        MoDiffDiffText::Options look;
        look.brackets = !MoDiffConsole::isColourful();
        MoDiffDiffText::write(MoDiffRecordGroups::explain(pair, setups, {}), look,
                              [&lines](MoDiffStyledLine const& line) { lines.push_back(line); });
    } catch (std::exception const& error) {
        lines.push_back(
            {{MoDiffStyle::eNote, "cannot show what differs: " + MoDiffShownText::escaped(error.what())}});
    }
    return lines;
}

} // namespace

MoDiffReviewCommand::MoDiffReviewCommand(CLI::App& parent)
    : MoDiffCommand(parent, "review", "Go through what failed in the last run and decide by single keys", kFooter),
      m_record(options()) {
    options().add_flag("--force", m_acceptance.force, "Also masters with changes that are not committed");
    options().add_option("--remark", m_acceptance.remark, "Keep this text with what is accepted")->type_name("TEXT");
}

int MoDiffReviewCommand::run() {
    if (!MoDiffTerminal::isThere()) {
        MoDiffTrouble().report("a review needs a terminal; elsewhere use `modiff show`, `modiff accept PAIR...`, "
                               "`modiff accept --group N` and `modiff retire PAIR...`");
        return eExitTrouble;
    }
    MoDiffOpenedRecord const record = m_record.open();
    MoDiffPairSetups setups(record.configuration);
    MoDiffGroupSearch const search(record.pairs, setups);
    MoDiffDecisions decisions(record.pairs.directory());
    MoDiffReviewSession session(record.pairs, search.groups(), decisions);
    if (session.items().empty()) {
        std::cout << "nothing is left to be decided in " << MoDiffShownText::escaped(record.pairs.directory())
                  << '\n';
        return finishOutput(eExitPassed);
    }
    MoDiffInterrupt const interrupt;
    auto const explain = [&setups](MoDiffPairResult const& pair) { return linesOf(pair, setups); };
    auto const save = [&decisions] { decisions.save(); };
    if (MoDiffReviewScreen(session, search.groups(), explain, save).run() == MoDiffReviewScreen::eCarryOut)
        return carryOut(record, session);
    MoDiffReviewSession::Counts const counts = session.counts();
    std::cout << counts.accepted << " to be accepted, " << counts.rejected << " rejected, " << counts.open << " open";
    if (counts.accepted + counts.rejected > 0)
        std::cout << "; kept in " << MoDiffShownText::escaped(record.pairs.directory() + "/decisions.jsonl");
    std::cout << '\n';
    int const signal = MoDiffInterrupt::getSignal();
    return finishOutput(signal != 0 ? 128 + signal : eExitPassed);
}

int MoDiffReviewCommand::carryOut(MoDiffOpenedRecord const& record, MoDiffReviewSession const& session) const {
    MoDiffAcceptanceConsole console(std::cout, record);
    auto const requests = console.request(MoDiffAcceptanceJournal::eReplace, session.accepted());
    return finishOutput(console.perform(requests, m_acceptance));
}
