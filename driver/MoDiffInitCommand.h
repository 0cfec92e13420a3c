#ifndef MO_DIFF_INIT_COMMAND_H
#define MO_DIFF_INIT_COMMAND_H

#include "MoDiffCommand.h"
#include "MoDiffConfigurationOptions.h"
#include "MoDiffSurvey.h"

#include <string>
#include <vector>

/// `modiff init`: looks at a tree and writes the configuration for it.
class MoDiffInitCommand : public MoDiffCommand {
public:
    explicit MoDiffInitCommand(CLI::App& parent);

    int run() override;

private:
    void requireFree() const;
    MoDiffSuiteConfiguration readOptions() const;
    void enterWorkingDirectory(MoDiffSuiteConfiguration& configuration) const;
    MoDiffSurvey survey(MoDiffSuiteConfiguration const& configuration) const;
    void write(MoDiffSurvey const& survey) const;
    std::string nextCommand() const;

    MoDiffConfigurationOptions m_configuration;
    std::string m_directory = ".";
    std::vector<std::string> m_formats;
    std::string m_start; ///< the directory in which the command was started
    std::string m_file;  ///< to be written, absolute
    bool m_isForced = false;
    bool m_isTrial = false;
};

#endif
