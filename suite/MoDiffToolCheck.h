#ifndef MO_DIFF_TOOL_CHECK_H
#define MO_DIFF_TOOL_CHECK_H

#include <string>
#include <vector>

/// A script that compares files of a format, and what it needs beside an interpreter.
struct MoDiffTool {
    char const* script;   ///< below the tools directory
    char const* modules;  ///< python modules, separated by blanks
    char const* programs; ///< programs, separated by blanks
};

namespace MoDiffToolCheck {

/// Where the engines look for the scripts, relative to the working directory.
extern char const kToolsDirectory[];

/// Says what a script lacks to run from the working directory, one sentence each with the way to get it; nothing
/// when it is complete. Without this check, everything that a script is needed for would count as different.
std::vector<std::string> findMissing(MoDiffTool const& tool);

} // namespace MoDiffToolCheck

#endif
