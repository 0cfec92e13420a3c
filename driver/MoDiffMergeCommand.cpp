#include "MoDiffMergeCommand.h"

#include "MoDiffRecordMerge.h"
#include "MoDiffRunConsole.h"
#include "MoDiffShellWord.h"
#include "MoDiffShownText.h"

#include <CLI/CLI.hpp>
#include <iostream>

MoDiffMergeCommand::MoDiffMergeCommand(CLI::App& parent)
    : MoDiffCommand(parent, "merge", "Join the records of a run that was split with --shard",
                    "All shards of one run are needed, each once and complete.\n\n"
                    "Exit status: 0 all pairs passed; 1 some did not; 2 trouble with a pair, or the records are not\n"
                    "the shards of one run; 3 nothing was compared. 2 counts before 1.") {
    options().add_option("DIR", m_directories, "Directories of the shards' records")->type_name("")->required();
    options()
        .add_option("--out", m_out, "Directory of the joined record")
        ->type_name("DIR")
        ->check(notEmpty())
        ->required();
}

int MoDiffMergeCommand::run() {
    MoDiffRunConsole console(std::cout,
                             {MoDiffStatusLine::eNone, MoDiffConsole::isColourful(), MoDiffRunConsole::eAtEnd});
    MoDiffRecordMerge::Report const report = MoDiffRecordMerge::merge(m_directories, m_out, console);
    console.showEnd(report.newFiles, report.header.unreadable);
    std::cout << "record     " << MoDiffShownText::escaped(report.recordFile) << '\n';
    if (report.totals.getFailures() > 0)
        std::cout << "next       modiff show --groups --record "
                  << MoDiffShownText::escaped(MoDiffShellWord::asNeeded(m_out))
                  << "  tells which pairs differ in the same way\n";
    return finishOutput(report.exitStatus);
}
