#include "MoDiffRetireCommand.h"

#include <CLI/CLI.hpp>
#include <iostream>

namespace {

char const kFooter[] =
    "A master goes when the record says that it has no actual file, this still holds, and the master is as it was.\n"
    "Parts of ids and globs mean pairs whose actual file is missing.";

bool isMissing(MoDiffPairResult const& pair) {
    return pair.outcome == MoDiffOutcome::eMissing;
}

} // namespace

MoDiffRetireCommand::MoDiffRetireCommand(CLI::App& parent)
    : MoDiffAcceptanceCommand(parent, "retire", "Take away masters whose actual files were missing in the last run",
                              kFooter) {
}

int MoDiffRetireCommand::run() {
    if (!isNaming())
        return complain("no pair is named; name some, or a file that lists them with --from");
    std::vector<std::string> const asked = names();
    MoDiffOpenedRecord const record = this->record().open();
    MoDiffAcceptanceConsole console(std::cout, record);
    auto const requests = console.request(MoDiffAcceptanceJournal::eRetire, record.pairs.choose(asked, isMissing));
    return finishOutput(console.perform(requests, acceptanceOptions()));
}
