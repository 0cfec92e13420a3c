#ifndef MO_DIFF_SCRIPT_RUNNER_H
#define MO_DIFF_SCRIPT_RUNNER_H

#include "KLTExport.h"

#include <string>

/// Runs the comparison scripts of the formats that have one, in place of std::system(). A program that wants to end a
/// script, limit its time or read its words installs its own for the whole process:
///
///     MoDiffScriptRunner* const previous = MoDiffScriptRunner::set(&runner);
///     ...verifications...
///     MoDiffScriptRunner::set(previous);
///
/// The runner stays the caller's and must live until another one is set. It is called on the thread that compares;
/// set() and get() may be called from any.
class KLT_EXPORT MoDiffScriptRunner {
public:
    virtual ~MoDiffScriptRunner();

    /// Runs a script on two files that exist, and waits for its end.
    /// @param command    the whole command line, quoted for the shell; valid during the call
    /// @param masterFile the master as it stands in the command, unquoted
    /// @param actualFile the actual file likewise
    /// @return the status as std::system() gives it: 0 is a pass, anything else a difference. What it raises passes
    ///         through the verification to its caller, without a result.
    virtual int run(char const* command, std::string const& masterFile, std::string const& actualFile) = 0;

    /// Installs a runner for the process, null for std::system() again.
    /// @return the one before, null when there was none
    static MoDiffScriptRunner* set(MoDiffScriptRunner* runner);
    /// The installed runner; null when scripts are run by std::system().
    static MoDiffScriptRunner* get();
};

#endif
