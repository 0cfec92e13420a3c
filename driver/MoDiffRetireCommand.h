#ifndef MO_DIFF_RETIRE_COMMAND_H
#define MO_DIFF_RETIRE_COMMAND_H

#include "MoDiffAcceptanceCommand.h"

/// `modiff retire`: takes away masters that have no actual file any more.
class MoDiffRetireCommand : public MoDiffAcceptanceCommand {
public:
    explicit MoDiffRetireCommand(CLI::App& parent);

    int run() override;
};

#endif
