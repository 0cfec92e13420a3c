#ifndef MO_DIFF_ACCEPTANCE_COMMAND_H
#define MO_DIFF_ACCEPTANCE_COMMAND_H

#include "MoDiffAcceptanceConsole.h"
#include "MoDiffCommand.h"
#include "MoDiffRecordOptions.h"

#include <string>
#include <vector>

/// What the commands that change masters have in common.
class MoDiffAcceptanceCommand : public MoDiffCommand {
public:
    bool takesFiles() const override { return false; }

protected:
    MoDiffAcceptanceCommand(CLI::App& parent, char const* word, char const* about, std::string const& footer);

    MoDiffRecordOptions const& record() const { return m_record; }
    /// Whether PAIR or --from is given.
    bool isNaming() const;
    /// The names of pairs as arguments and --from tell them.
    std::vector<std::string> names() const;
    MoDiffAcceptance::Options acceptanceOptions() const { return m_acceptance; }
    /// Tells what is wrong with the command line.
    static int complain(std::string const& text);

private:
    MoDiffRecordOptions m_record;
    MoDiffAcceptance::Options m_acceptance;
    std::vector<std::string> m_names;
    std::string m_from;
};

#endif
