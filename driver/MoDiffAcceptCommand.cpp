#include "MoDiffAcceptCommand.h"

#include "MoDiffGroupSearch.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>

namespace fs = std::filesystem;

namespace {

char const kFooter[] =
    "Only what the record tells is accepted: a pair whose files have changed since the run is refused. Parts of ids\n"
    "and globs mean pairs that failed; an expected difference is accepted by its whole id. What is accepted is\n"
    "compared again and must pass.";

bool hasFailed(MoDiffPairResult const& pair) {
    return isFailure(pair.outcome);
}

std::string absolute(std::string const& path) {
    return fs::absolute(path).lexically_normal().string();
}

} // namespace

MoDiffAcceptCommand::MoDiffAcceptCommand(CLI::App& parent)
    : MoDiffAcceptanceCommand(parent, "accept", "Make actual files of the last run masters", kFooter) {
    options()
        .add_option("--group", m_group, "All pairs of a group; `modiff show --groups` lists them")
        ->type_name("N");
    options().add_flag("--all", m_isAll, "All pairs that failed");
    options()
        .add_option("--new", m_new, "Make masters of actual files that have none, where their format wants them")
        ->type_name("PATH");
    options()
        .add_option("--under", m_under, "With --new: the folder of the report, in which Masters lies")
        ->type_name("DIR")
        ->check(notEmpty());
}

std::vector<MoDiffPairResult const*> MoDiffAcceptCommand::choose(MoDiffOpenedRecord const& record,
                                                                 std::vector<std::string> names) const {
    std::vector<MoDiffPairResult const*> pairs;
    if (isGiven("--group")) {
        MoDiffPairSetups setups(record.configuration);
        pairs = MoDiffGroupSearch(record.pairs, setups).pairsOf(m_group);
    }
    if (m_isAll)
        for (MoDiffPairResult const& pair : record.pairs.pairs())
            if (hasFailed(pair))
                names.push_back(pair.id);
    for (MoDiffPairResult const* const pair : pairs)
        names.push_back(pair->id);
    return record.pairs.choose(names, hasFailed);
}

/// @param requests gets one for each new master
void MoDiffAcceptCommand::addNew(MoDiffOpenedRecord const& record, MoDiffAcceptanceConsole& console,
                                 MoDiffAcceptanceConsole::Requests& requests) const {
    MoDiffPairSetups const setups(record.configuration);
    for (std::string const& path : m_new) {
        try {
            requests.push_back({MoDiffAcceptanceJournal::eCreate, setups.placeNew(path, m_under)});
        } catch (std::exception const& error) {
            console.refuse(path, error.what());
        }
    }
}

int MoDiffAcceptCommand::run() {
    if (!isNaming() && !isGiven("--group") && !m_isAll && m_new.empty())
        return complain("no pair is named; name some, or use --group N, --all or --new PATH; `modiff show --groups` "
                        "lists the groups");
    if (m_new.empty() == isGiven("--under"))
        return complain("--new PATH and --under DIR go together");
    std::vector<std::string> const asked = names(); // seen from here, like the paths below
    for (std::string& path : m_new)
        path = absolute(path);
    m_under = m_under.empty() ? "" : absolute(m_under);
    MoDiffOpenedRecord const record = this->record().open();
    MoDiffAcceptanceConsole console(std::cout, record);
    MoDiffAcceptanceConsole::Requests requests =
        console.request(MoDiffAcceptanceJournal::eReplace, choose(record, asked));
    addNew(record, console, requests);
    return finishOutput(console.perform(requests, acceptanceOptions()));
}
