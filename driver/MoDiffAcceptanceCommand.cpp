#include "MoDiffAcceptanceCommand.h"

#include "MoDiffInput.h"
#include "MoDiffTrouble.h"

#include <CLI/CLI.hpp>

namespace {

char const kStatus[] = "\n\nExit status: 0 all done, or done before; 1 something was refused; 2 trouble.";

} // namespace

MoDiffAcceptanceCommand::MoDiffAcceptanceCommand(CLI::App& parent, char const* word, char const* about,
                                                 std::string const& footer)
    : MoDiffCommand(parent, word, about, footer + kStatus), m_record(options()) {
    options()
        .add_option("PAIR", m_names, "An id, a part of ids, or a glob that meets whole ids")
        ->type_name("")
        ->transform(asGiven());
    options()
        .add_option("--from", m_from, "Read such names from a file, each on a line; - for standard input")
        ->type_name("FILE")
        ->check(notEmpty());
    options().add_flag("--dry-run", m_acceptance.dryRun, "Tell what would be done");
    options().add_flag("--force", m_acceptance.force, "Also masters with changes that are not committed");
    options().add_option("--remark", m_acceptance.remark, "Keep this text with what is accepted")->type_name("TEXT");
}

bool MoDiffAcceptanceCommand::isNaming() const {
    return !m_names.empty() || !m_from.empty();
}

std::vector<std::string> MoDiffAcceptanceCommand::names() const {
    std::vector<std::string> names = m_names;
    if (!m_from.empty())
        for (std::string const& name : MoDiffInput::readNames(m_from, /*isSeparated=*/false))
            names.push_back(name);
    return names;
}

int MoDiffAcceptanceCommand::complain(std::string const& text) {
    MoDiffTrouble().report(text);
    return eExitTrouble;
}
