#ifndef MO_DIFF_FORMATS_COMMAND_H
#define MO_DIFF_FORMATS_COMMAND_H

#include "MoDiffCommand.h"

/// `modiff formats`: lists the output formats and where their files lie.
class MoDiffFormatsCommand : public MoDiffCommand {
public:
    explicit MoDiffFormatsCommand(CLI::App& parent);

    int run() override;
};

#endif
