#ifndef MO_DIFF_PROGRAM_OUTPUT_H
#define MO_DIFF_PROGRAM_OUTPUT_H

#include <string>
#include <vector>

/// What another program writes to its standard output. What it complains about is dropped.
struct MoDiffProgramOutput {
    bool isGood = false; ///< whether the program could be run and ended with status 0
    std::string bytes;

    /// Runs a program, which is looked for in PATH, to its end.
    /// @param words the program and its arguments
    static MoDiffProgramOutput of(std::vector<std::string> words);
};

#endif
