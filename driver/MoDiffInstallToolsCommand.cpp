#include "MoDiffInstallToolsCommand.h"

#include "MoDiffInstallTools.h"

#include <CLI/CLI.hpp>
#include <iostream>

MoDiffInstallToolsCommand::MoDiffInstallToolsCommand(CLI::App& parent)
    : MoDiffCommand(parent, "install-tools", "Lay out the scripts that compare xlsx, pdf and vmd files",
                    "Exit status: 0 all scripts are in their place; 2 one could not be put there.") {
    options()
        .add_option("DIR", m_directory, "Directory two levels above the one that modiff is run in")
        ->type_name("")
        ->check(notEmpty())
        ->required();
}

int MoDiffInstallToolsCommand::run() {
    MoDiffInstallTools::install(m_directory, std::cout);
    return finishOutput(eExitPassed);
}
