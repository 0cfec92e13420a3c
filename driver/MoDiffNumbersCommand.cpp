#include "MoDiffNumbersCommand.h"

#include "MoDiffConsole.h"
#include "MoDiffNumbers.h"

#include <CLI/CLI.hpp>
#include <iostream>

MoDiffNumbersCommand::MoDiffNumbersCommand(CLI::App& parent)
    : MoDiffCommand(parent, "numbers", "Compare the numbers in two texts, within a small tolerance",
                    "Numbers agree when they differ by about one unit in the fifteenth significant digit at most.\n\n"
                    "Exit status: 0 all agree; 1 some differ; 2 a text is missing or cannot be read.") {
    options().add_option("MASTER", m_master, "Text with the expected numbers")->type_name("")->required();
    options().add_option("ACTUAL", m_actual, "Text with the produced numbers")->type_name("")->required();
}

int MoDiffNumbersCommand::run() {
    MoDiffConsole console(std::cout, MoDiffConsole::eByFiles, MoDiffConsole::isColourful());
    bool const agree = MoDiffNumbers::compare(m_master, m_actual, console);
    return finishOutput(agree ? eExitPassed : eExitDifferent);
}
