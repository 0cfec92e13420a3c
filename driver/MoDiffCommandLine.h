#ifndef MO_DIFF_COMMAND_LINE_H
#define MO_DIFF_COMMAND_LINE_H

namespace MoDiffCommandLine {

/// Reads the arguments that the program was started with and runs the command that they name.
/// @return the exit status
int run(int count, char** arguments);

} // namespace MoDiffCommandLine

#endif
