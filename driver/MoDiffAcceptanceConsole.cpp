#include "MoDiffAcceptanceConsole.h"

#include "MoDiffDecisions.h"
#include "MoDiffExitStatus.h"
#include "MoDiffShownText.h"

#include <ostream>

namespace {

using Acceptance = MoDiffAcceptance;

struct StateRow {
    char const* word;
    MoDiffConsole::Colour colour;
};

StateRow const kStates[] = {{"accepted", MoDiffConsole::eGreen},
                            {"unchanged", MoDiffConsole::eGreen},
                            {"refused", MoDiffConsole::eYellow},
                            {"trouble", MoDiffConsole::eRed}}; // in the order of MoDiffAcceptance::State

} // namespace

MoDiffAcceptanceConsole::MoDiffAcceptanceConsole(std::ostream& out, MoDiffOpenedRecord const& record)
    : m_out(out), m_record(record), m_console(out, MoDiffConsole::eById, MoDiffConsole::isColourful()) {
}

MoDiffAcceptanceConsole::Requests
MoDiffAcceptanceConsole::request(Action action, std::vector<MoDiffPairResult const*> const& pairs) {
    Requests requests;
    for (MoDiffPairResult const* const pair : pairs) {
        std::string const reason = MoDiffVerifiedAcceptance::whyNot(action, *pair);
        if (reason.empty())
            requests.push_back({action, *pair});
        else
            refuse(pair->id, reason);
    }
    return requests;
}

void MoDiffAcceptanceConsole::refuse(std::string const& subject, std::string const& reason) {
    show({subject, Acceptance::eRefused, reason}, false);
}

void MoDiffAcceptanceConsole::show(Acceptance::Answer const& answer, bool dryRun) {
    ++m_counts[answer.state];
    StateRow const& row = kStates[answer.state];
    bool const isMeant = dryRun && answer.state == Acceptance::eAccepted;
    m_console.showNote(row.colour, isMeant ? "acceptable" : row.word, answer.pair, answer.reason);
}

int MoDiffAcceptanceConsole::perform(Requests const& requests, Acceptance::Options const& options) {
    MoDiffVerifiedAcceptance acceptance(m_record.pairs, m_record.configuration);
    if (!options.dryRun) {
        Answers const left = acceptance.finishInterrupted();
        if (!left.empty())
            m_out << "note       an acceptance was interrupted; " << left.size()
                  << " of its pairs are finished now\n";
        for (Acceptance::Answer const& answer : left)
            show(answer, false);
        forgetDecisions(left);
    }
    Answers const answers = acceptance.perform(requests, options);
    for (Acceptance::Answer const& answer : answers)
        show(answer, options.dryRun);
    if (!options.dryRun)
        forgetDecisions(answers);
    showEnd(options.dryRun);
    return m_counts[Acceptance::eTrouble]   ? eExitTrouble
           : m_counts[Acceptance::eRefused] ? eExitDifferent
                                            : eExitPassed;
}

/// What is carried out is no longer to be decided.
void MoDiffAcceptanceConsole::forgetDecisions(Answers const& answers) const {
    MoDiffDecisions decisions(m_record.pairs.directory());
    bool isChanged = false;
    for (Acceptance::Answer const& answer : answers)
        if (answer.state == Acceptance::eAccepted || answer.state == Acceptance::eAlready)
            isChanged = decisions.remove(answer.pair) || isChanged;
    if (isChanged)
        decisions.save();
}

void MoDiffAcceptanceConsole::showEnd(bool dryRun) {
    m_out << '\n';
    bool isFirst = true;
    for (std::size_t state = 0; state < m_counts.size(); ++state) {
        if (m_counts[state] == 0 && state != Acceptance::eAccepted)
            continue;
        m_out << (isFirst ? "" : ", ") << m_counts[state] << ' '
              << (dryRun && state == Acceptance::eAccepted ? "acceptable" : kStates[state].word);
        isFirst = false;
    }
    m_out << (dryRun ? "; nothing was written\n" : "\n");
    if (!dryRun && m_counts[Acceptance::eAccepted] > 0)
        m_out << "listed in  " << MoDiffShownText::escaped(m_record.pairs.directory() + "/accepted.jsonl") << '\n';
}
