#ifndef MO_DIFF_DOCTOR_COMMAND_H
#define MO_DIFF_DOCTOR_COMMAND_H

#include "MoDiffCommand.h"
#include "MoDiffConfigurationOptions.h"

#include <string>

/// `modiff doctor`: looks for whatever could spoil a run.
class MoDiffDoctorCommand : public MoDiffCommand {
public:
    explicit MoDiffDoctorCommand(CLI::App& parent);

    int run() override;

private:
    MoDiffConfigurationOptions m_configuration;
    std::string m_out;
};

#endif
