#ifndef MO_DIFF_INSTALL_TOOLS_COMMAND_H
#define MO_DIFF_INSTALL_TOOLS_COMMAND_H

#include "MoDiffCommand.h"

/// `modiff install-tools`: lays out the scripts that compare xlsx, pdf and vmd files.
class MoDiffInstallToolsCommand : public MoDiffCommand {
public:
    explicit MoDiffInstallToolsCommand(CLI::App& parent);

    int run() override;

private:
    std::string m_directory;
};

#endif
