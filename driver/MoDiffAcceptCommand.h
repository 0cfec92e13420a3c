#ifndef MO_DIFF_ACCEPT_COMMAND_H
#define MO_DIFF_ACCEPT_COMMAND_H

#include "MoDiffAcceptanceCommand.h"

/// `modiff accept`: makes actual files masters.
class MoDiffAcceptCommand : public MoDiffAcceptanceCommand {
public:
    explicit MoDiffAcceptCommand(CLI::App& parent);

    int run() override;

private:
    std::vector<MoDiffPairResult const*> choose(MoDiffOpenedRecord const& record,
                                                std::vector<std::string> names) const;
    void addNew(MoDiffOpenedRecord const& record, MoDiffAcceptanceConsole& console,
                MoDiffAcceptanceConsole::Requests& requests) const;

    std::size_t m_group = 0;
    bool m_isAll = false;
    std::vector<std::string> m_new;
    std::string m_under;
};

#endif
