#ifndef MO_DIFF_CONFIGURATION_TEXT_H
#define MO_DIFF_CONFIGURATION_TEXT_H

#include "MoDiffSurvey.h"

#include <string>

/// A configuration file for people: every key with what it means.
namespace MoDiffConfigurationText {

/// The text of a file with what a survey found and options said. Values that are the defaults stand there as
/// comments. Raises MoDiffConfigurationError for a value that no such file can hold.
/// @param directory of the file, absolute and without links; the working directory is written as seen from it
std::string of(MoDiffSurvey const& survey, std::string const& directory);

} // namespace MoDiffConfigurationText

#endif
