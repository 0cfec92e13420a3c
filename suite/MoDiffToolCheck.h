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

/// Something that a script lacks, and the way to get it.
struct Lack {
    std::string text;
    std::string remedy;
};

/// What a script lacks to run from the working directory; nothing when it is complete. Without this check, everything
/// that a script is needed for would count as different, or, where a start file ends the interpreter, as equal.
std::vector<Lack> findLacks(MoDiffTool const& tool);

/// The same, one sentence each.
std::vector<std::string> findMissing(MoDiffTool const& tool);

/// The path and version of the interpreter that the engines start; "" when it does not run.
std::string describeInterpreter();

} // namespace MoDiffToolCheck

#endif
