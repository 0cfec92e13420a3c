#ifndef MO_DIFF_NUMBERS_COMMAND_H
#define MO_DIFF_NUMBERS_COMMAND_H

#include "MoDiffCommand.h"

/// `modiff numbers`: compares the numbers in two texts.
class MoDiffNumbersCommand : public MoDiffCommand {
public:
    explicit MoDiffNumbersCommand(CLI::App& parent);

    int run() override;

private:
    std::string m_master;
    std::string m_actual;
};

#endif
