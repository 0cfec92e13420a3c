#ifndef MO_DIFF_REVIEW_COMMAND_H
#define MO_DIFF_REVIEW_COMMAND_H

#include "MoDiffAcceptance.h"
#include "MoDiffCommand.h"
#include "MoDiffRecordOptions.h"
#include "MoDiffReviewScreen.h"

/// `modiff review`: goes through what failed, on a terminal, and accepts what is decided to be right.
class MoDiffReviewCommand : public MoDiffCommand {
public:
    explicit MoDiffReviewCommand(CLI::App& parent);

    int run() override;

private:
    int carryOut(MoDiffOpenedRecord const& record, MoDiffReviewSession const& session) const;

    MoDiffRecordOptions m_record;
    MoDiffAcceptance::Options m_acceptance;
};

#endif
