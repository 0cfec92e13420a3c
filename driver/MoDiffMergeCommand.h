#ifndef MO_DIFF_MERGE_COMMAND_H
#define MO_DIFF_MERGE_COMMAND_H

#include "MoDiffCommand.h"

#include <string>
#include <vector>

/// `modiff merge`: joins the records of a run's shards.
class MoDiffMergeCommand : public MoDiffCommand {
public:
    explicit MoDiffMergeCommand(CLI::App& parent);

    int run() override;

private:
    std::vector<std::string> m_directories;
    std::string m_out;
};

#endif
