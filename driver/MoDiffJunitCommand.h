#ifndef MO_DIFF_JUNIT_COMMAND_H
#define MO_DIFF_JUNIT_COMMAND_H

#include "MoDiffCommand.h"
#include "MoDiffRecordOptions.h"

#include <string>

/// `modiff junit`: writes the pairs of a record as test cases for CI servers.
class MoDiffJunitCommand : public MoDiffCommand {
public:
    explicit MoDiffJunitCommand(CLI::App& parent);

    int run() override;

    /// Puts the test cases of a record into a file. The current directory must be the working directory. Raises
    /// std::exception.
    static void writeFile(std::string const& fileName, MoDiffRecordPairs const& record,
                          MoDiffSuiteConfiguration const& configuration);

private:
    MoDiffRecordOptions m_record;
    std::string m_out;
};

#endif
