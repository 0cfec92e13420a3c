#ifndef MO_DIFF_VERIFIED_ACCEPTANCE_H
#define MO_DIFF_VERIFIED_ACCEPTANCE_H

#include "MoDiffAcceptance.h"
#include "MoDiffPairSetups.h"
#include "MoDiffRecordPairs.h"

/// Accepts pairs and has the engine of each compare it again: what was accepted must pass.
class MoDiffVerifiedAcceptance {
public:
    using Action = MoDiffAcceptanceJournal::Action;
    using Answers = std::vector<MoDiffAcceptance::Answer>;

    /// See MoDiffAcceptance.
    /// @param configuration must outlive this object
    MoDiffVerifiedAcceptance(MoDiffRecordPairs const& record, MoDiffSuiteConfiguration const& configuration);

    /// See MoDiffAcceptance.
    Answers finishInterrupted();

    /// Carries out the requests that can be carried out and answers each, in their order. One that was accepted and
    /// does not pass is answered with trouble.
    Answers perform(std::vector<MoDiffAcceptance::Request> const& requests, MoDiffAcceptance::Options const& options);

    /// Why this cannot be done with a pair because of its outcome; "" when it can.
    static std::string whyNot(Action action, MoDiffPairResult const& pair);

private:
    void verify(std::vector<MoDiffPairResult> const& pairs, Answers& answers);

    MoDiffRecordPairs const& m_record;
    MoDiffSuiteConfiguration const& m_configuration;
    MoDiffAcceptance m_acceptance;
};

#endif
