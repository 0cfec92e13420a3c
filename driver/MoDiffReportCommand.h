#ifndef MO_DIFF_REPORT_COMMAND_H
#define MO_DIFF_REPORT_COMMAND_H

#include "MoDiffCommand.h"
#include "MoDiffRecordOptions.h"

#include <string>

/// `modiff report`: writes a record as pages for a browser.
class MoDiffReportCommand : public MoDiffCommand {
public:
    explicit MoDiffReportCommand(CLI::App& parent);

    int run() override;

private:
    MoDiffRecordOptions m_record;
    std::string m_out;
};

#endif
