#include "MoDiffVerifiedAcceptance.h"

#include "MoDiffRun.h"

#include <map>

namespace {

using Acceptance = MoDiffAcceptance;
using Journal = MoDiffAcceptanceJournal;

char const kIdleRule[] = "now take the rule that expects a difference out of the configuration";

/// Keeps what is said of pairs that did not pass; "" for those that did.
class Verdicts : public MoDiffRunEvents {
public:
    void finished(MoDiffPairResult const& result) override {
        bool const passed = result.outcome == MoDiffOutcome::ePassed;
        std::string const detail = result.detail.empty() ? "" : ", " + result.detail;
        m_words[result.id] = passed ? "" : wordOf(result.outcome) + detail;
    }
    std::string of(std::string const& id) const {
        auto const found = m_words.find(id);
        return found == m_words.end() ? "not compared" : found->second;
    }

private:
    std::map<std::string, std::string> m_words;
};

} // namespace

MoDiffVerifiedAcceptance::MoDiffVerifiedAcceptance(MoDiffRecordPairs const& record,
                                                   MoDiffSuiteConfiguration const& configuration)
    : m_record(record), m_configuration(configuration), m_acceptance(record.directory()) {
}

MoDiffVerifiedAcceptance::Answers MoDiffVerifiedAcceptance::finishInterrupted() {
    Answers answers = m_acceptance.finishInterrupted();
    std::vector<MoDiffPairResult> pairs(answers.size());
    for (std::size_t index = 0; index < answers.size(); ++index) {
        MoDiffPairResult const* const pair = m_record.find(answers[index].pair);
        if (pair && !pair->hash.actual.empty()) // neither a new one nor one that went
            pairs[index] = *pair;
    }
    verify(pairs, answers);
    return answers;
}

MoDiffVerifiedAcceptance::Answers MoDiffVerifiedAcceptance::perform(std::vector<Acceptance::Request> const& requests,
                                                                    Acceptance::Options const& options) {
    Answers answers = m_acceptance.perform(requests, options);
    std::vector<MoDiffPairResult> pairs;
    pairs.reserve(requests.size());
    for (Acceptance::Request const& request : requests)
        pairs.push_back(request.action == Journal::eRetire ? MoDiffPairResult() : request.pair);
    if (!options.dryRun)
        verify(pairs, answers);
    for (std::size_t index = 0; index < answers.size(); ++index)
        if (answers[index].state == Acceptance::eAccepted && requests[index].pair.outcome == MoDiffOutcome::eExpected)
            answers[index].reason = kIdleRule;
    return answers;
}

/// @param pairs those of the answers; one without an id is not compared
void MoDiffVerifiedAcceptance::verify(std::vector<MoDiffPairResult> const& pairs, Answers& answers) {
    MoDiffPairSetups setups(m_configuration);
    MoDiffPlan plan;
    std::vector<std::size_t> accepted;
    for (std::size_t index = 0; index < pairs.size(); ++index) {
        if (pairs[index].id.empty() || answers[index].state != Acceptance::eAccepted)
            continue;
        accepted.push_back(index);
        if (MoDiffEngineSetup const* const setup = setups.find(pairs[index]))
            plan.pairs.push_back({pairs[index].id, setup, pairs[index].master, pairs[index].actual, {}});
    }
    Verdicts verdicts;
    plan.complete(m_configuration);
    if (!plan.pairs.empty())
        MoDiffRun::perform(plan, m_configuration, {}, verdicts);
    for (std::size_t const index : accepted)
        if (std::string const words = verdicts.of(pairs[index].id); !words.empty())
            answers[index] = {pairs[index].id, Acceptance::eTrouble, "accepted, but it does not pass: " + words};
}

std::string MoDiffVerifiedAcceptance::whyNot(Action action, MoDiffPairResult const& pair) {
    bool const hasActual = !pair.hash.actual.empty();
    switch (pair.outcome) {
    case MoDiffOutcome::eDifferent:
    case MoDiffOutcome::eMissing:
    case MoDiffOutcome::eExpected:
        if (action == Journal::eRetire)
            return hasActual ? "it has an actual file" : "";
        return hasActual ? "" : "there is no actual file; `modiff retire` takes the master away";
    case MoDiffOutcome::ePassed:
        return "it passed";
    case MoDiffOutcome::eUnexpectedlyPassed:
        return "it passed; take the rule that expects a difference out of the configuration";
    default:
        return std::string("there is no verdict: ") + wordOf(pair.outcome) +
               (pair.detail.empty() ? "" : ", " + pair.detail);
    }
}
