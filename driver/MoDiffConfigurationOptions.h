#ifndef MO_DIFF_CONFIGURATION_OPTIONS_H
#define MO_DIFF_CONFIGURATION_OPTIONS_H

#include "MoDiffSuiteConfiguration.h"

#include <map>
#include <string>
#include <vector>

namespace CLI {
class App;
}

/// The options that name a configuration file and overrule its values.
class MoDiffConfigurationOptions {
public:
    /// Whether a configuration file is read, too.
    enum Source { eFileAndOptions, eOptionsAlone };

    /// @param options kept, with references to members of this object
    explicit MoDiffConfigurationOptions(CLI::App& options, Source source = eFileAndOptions);
    MoDiffConfigurationOptions(MoDiffConfigurationOptions const&) = delete;
    MoDiffConfigurationOptions& operator=(MoDiffConfigurationOptions const&) = delete;

    /// Reads the file and lets the options win. Raises MoDiffConfigurationError.
    MoDiffSuiteConfiguration read() const;

    /// What the options say, without what depends on other values: see MoDiffConfigurationReader::resolve.
    MoDiffSuiteConfiguration readOptions() const;

    /// Enters the working directory. Raises std::system_error that names it.
    static void enterWorkingDirectory(MoDiffSuiteConfiguration const& configuration);

    /// Where the results of a run lie unless an option says otherwise: "modiff-run" beside the configuration file, or
    /// in the current directory without one. Absolute.
    static std::string defaultOutDirectory(MoDiffSuiteConfiguration const& configuration);

private:
    void set(MoDiffSuiteConfiguration& configuration) const;

    CLI::App& m_options;
    std::string m_file;
    std::map<std::string, std::vector<std::string>> m_values; ///< by key
};

#endif
