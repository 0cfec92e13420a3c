#ifndef MO_DIFF_VERIFY_COMMAND_H
#define MO_DIFF_VERIFY_COMMAND_H

#include "MoDiffCommand.h"
#include "MoDiffVerification.h"

/// `modiff verify`: verifies reports of one format.
class MoDiffVerifyCommand : public MoDiffCommand {
public:
    explicit MoDiffVerifyCommand(CLI::App& parent);

    int run() override;

private:
    void addReportOptions();
    void addOutputOptions();
    void addEngineOptions();

    MoDiffVerificationOptions m_asked;
    std::string m_reportsFrom; ///< empty for none
    std::string m_maxAge;      ///< empty for none
    bool m_areNamesSeparated = false;
};

#endif
