#ifndef MO_DIFF_CONFIGURATION_READER_H
#define MO_DIFF_CONFIGURATION_READER_H

#include "MoDiffSuiteConfiguration.h"

#include <string>
#include <vector>

/// Makes the configuration of a run from a file and from options. Errors raise MoDiffConfigurationError.
///
///     std::string const file = MoDiffConfigurationReader::find(".");
///     MoDiffSuiteConfiguration configuration = MoDiffConfigurationReader::read(file);
///     MoDiffConfigurationReader::setOption(configuration, "jobs", {"4"}, "-j");
///     MoDiffConfigurationReader::resolve(configuration);
namespace MoDiffConfigurationReader {

extern char const kFileName[]; ///< "modiff.toml"

/// The configuration file in a directory or the nearest one above it; "" when there is none.
std::string find(std::string const& directory);

/// Reads a configuration file; "" gives the defaults, with the current directory as working directory. The working
/// directory becomes an absolute path, for which relative ones are seen from the file's directory.
MoDiffSuiteConfiguration read(std::string const& file);

/// Sets a value, all of a list, as an option of the command line tells it; option names are shown in errors.
/// @param key    as in the file, for example "time-limit"; no table
/// @param values one text, several for a list
void setOption(MoDiffSuiteConfiguration& configuration, std::string const& key,
               std::vector<std::string> const& values, std::string const& option);

/// Fills in what depends on other values, formats and jobs, and checks that the values go together. To be called
/// once, when all options are set.
void resolve(MoDiffSuiteConfiguration& configuration);

} // namespace MoDiffConfigurationReader

#endif
