#include "MoDiffAuditCommand.h"

#include "MoDiffAuditConsole.h"
#include "MoDiffAuditJson.h"
#include "MoDiffInterrupt.h"
#include "MoDiffSelection.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

namespace {

char const kFooter[] =
    "Sums come from the record, places from the files as long as they are what was compared.\n\n"
    "With --mutate, bytes of masters are changed one at a time, in copies below the temporary directory, and "
    "compared\n"
    "by the format's engine with the configuration's jobs and limits: what is noticed of them is what a green run "
    "is\n"
    "worth. Each format gets the same number, those that scripts compare 200 at most.\n\n"
    "Exit status: 0 told; 2 trouble. A signal ends with 128 and its number.";

std::size_t const kMostPlaces = 5;
int const kStatusOfSignals = 128;

} // namespace

MoDiffAuditCommand::MoDiffAuditCommand(CLI::App& parent)
    : MoDiffCommand(parent, "audit", "Tell how much of the last run's files nobody compares", kFooter),
      m_record(options()) {
    options()
        .add_option("--format", m_formats, "Look at this format only; repeatable")
        ->type_name("WORD")
        ->allow_extra_args(false);
    options().add_option("--most", m_most, "Show so many folders, pairs and rests; default: 20")->type_name("N");
    options().add_flag("--json", m_isJson, "Tell all of it as JSON");
    CLI::Option* const mutate =
        options()
            .add_option("--mutate", m_mutations.count, "Change N bytes of masters and count what is noticed")
            ->type_name("N")
            ->check(CLI::Range(1, 10'000'000));
    options()
        .add_option("--seed", m_mutations.seed, "Choose other bytes; the same for the same seed; default: 1")
        ->type_name("S")
        ->needs(mutate);
}

MoDiffAuditCommand::Pairs MoDiffAuditCommand::choose(MoDiffRecordPairs const& record) const {
    for (std::string const& format : m_formats)
        if (!MoDiffFormatTable::find(format))
            throw MoDiffSelectionError("there is no format " + format + "; choose among " +
                                       MoDiffFormatTable::words());
    Pairs pairs;
    for (MoDiffPairResult const& pair : record.pairs())
        if (m_formats.empty() || std::find(m_formats.begin(), m_formats.end(), pair.format) != m_formats.end())
            pairs.push_back(&pair);
    if (pairs.empty())
        throw MoDiffSelectionError("the record has no pair of the formats");
    return pairs;
}

int MoDiffAuditCommand::run() {
    MoDiffOpenedRecord const record = m_record.open(m_isJson ? std::cerr : std::cout);
    Pairs const pairs = choose(record.pairs);
    MoDiffPairSetups setups(record.configuration);
    MoDiffAudit const audit(pairs, setups, kMostPlaces);
    if (!m_isJson)
        MoDiffAuditConsole(std::cout, m_most).show(audit);
    if (m_mutations.count > 0)
        return mutate(pairs, setups, record.configuration, audit);
    if (m_isJson)
        std::cout << MoDiffAuditJson::text(audit, nullptr, {});
    return finishOutput(eExitPassed);
}

int MoDiffAuditCommand::mutate(Pairs const& pairs, MoDiffPairSetups& setups,
                               MoDiffSuiteConfiguration const& configuration, MoDiffAudit const& audit) {
    std::cout.flush(); // this takes a while, and processes are forked
    MoDiffInterrupt const interrupt;
    m_mutations.signal = &MoDiffInterrupt::getSignal();
    std::vector<std::string> changed;
    MoDiffMutations::Outcomes const outcomes =
        MoDiffMutations::perform(pairs, setups, configuration, m_mutations, changed);
    MoDiffAuditConsole console(std::cout, m_most);
    if (m_isJson) {
        std::cout << MoDiffAuditJson::text(audit, &outcomes, changed);
    } else {
        console.show(outcomes);
        console.showChanged(changed);
    }
    int const signal = *m_mutations.signal;
    return finishOutput(signal == 0 ? eExitPassed : kStatusOfSignals + signal);
}
