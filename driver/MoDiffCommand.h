#ifndef MO_DIFF_COMMAND_H
#define MO_DIFF_COMMAND_H

#include "MoDiffExitStatus.h"

#include <map>
#include <string>

namespace CLI {
class App;
class Option;
class Validator;
} // namespace CLI

/// A command of modiff: its options and what it does.
class MoDiffCommand {
public:
    virtual ~MoDiffCommand() = default;
    MoDiffCommand(MoDiffCommand const&) = delete;
    MoDiffCommand& operator=(MoDiffCommand const&) = delete;

    /// Whether the command line that was read names this command.
    bool isAsked() const;

    /// The word that asks for it.
    std::string getWord() const;

    /// Does what the command line asks for. Errors that end it raise exceptions.
    /// @return the exit status: a MoDiffExitStatus, or 128 and the number of the signal that ended the command
    virtual int run() = 0;

    /// Whether the arguments that are no options name files, so that "./" may stand before them.
    virtual bool takesFiles() const { return true; }

    /// Stands before an argument that is neither to be read as an option nor as a list.
    static char constexpr kVerbatim = '\x1f';

    /// Writes out what standard output still holds; a failure is trouble.
    static int finishOutput(int status);

protected:
    /// Adds the command to those that modiff knows.
    /// @param parent kept; must outlive this object
    /// @param about  one line for the list of commands
    /// @param footer what --help tells behind the options, the exit statuses among it
    MoDiffCommand(CLI::App& parent, char const* word, char const* about, std::string const& footer);

    CLI::App& options() const { return m_options; }
    bool isGiven(char const* option) const;

    /// Refuses an empty value, which a shell variable that is not set leaves.
    static CLI::Validator notEmpty();
    /// Takes kVerbatim away; for the arguments of commands that take no files.
    static CLI::Validator asGiven();
    /// Turns one of some words, whatever its case, into the number that stands for it.
    static CLI::Validator oneOf(std::map<std::string, int> const& numbers);

private:
    CLI::App& m_options;
};

#endif
