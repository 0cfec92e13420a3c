#include "MoDiffFormatsCommand.h"

#include "MoDiffFormatTable.h"

#include <iomanip>
#include <iostream>

MoDiffFormatsCommand::MoDiffFormatsCommand(CLI::App& parent)
    : MoDiffCommand(parent, "formats", "List the output formats and where their files lie",
                    "Exit status: 0; 2 when the list cannot be written.") {
}

int MoDiffFormatsCommand::run() {
    MoDiffEngineSettings const example = {"", "TYPE-NAME", "MASTER-SUB-DIRECTORY", "SUFFIX"};
    std::cout << "For the report DIR/REPORT, seen from the working directory:\n\n"
              << std::left << std::setw(14) << "FORMAT" << std::setw(22) << "COMPARED AS" << std::setw(34)
              << "ACTUAL FILES IN"
              << "MASTERS\n";
    for (MoDiffFormatRow const& row : MoDiffFormatTable::rows()) {
        auto const engine = row.makeEngine(example);
        std::cout << std::setw(14) << row.word << std::setw(22) << MoDiffFormatTable::comparisonWords(row)
                  << std::setw(34) << engine->getOutputDirectory()
                  << engine->getMasterFileGlobExpression("DIR/REPORT") << '\n';
    }
    std::cout << "\n--sub-directory S puts /S behind the actual files' directory and behind Masters.\n";
    return finishOutput(eExitPassed);
}
