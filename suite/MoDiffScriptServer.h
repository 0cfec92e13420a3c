#ifndef MO_DIFF_SCRIPT_SERVER_H
#define MO_DIFF_SCRIPT_SERVER_H

#include "MoDiffDescriptor.h"
#include "MoDiffScriptOutput.h"
#include "MoDiffScriptRunner.h"

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

/// How a script ended, in more words than a pass or a difference.
struct MoDiffScriptEnd {
    enum Kind {
        eNotRun,
        eCompared, ///< its status is a verdict
        eTrouble,  ///< it could not compare
        eCrashed,  ///< a signal ended it
        eMemory    ///< it ran out of memory
    };
    Kind kind = eNotRun;
    std::string detail; ///< a sentence; "" for a verdict
    std::string output; ///< what it printed, on both streams in their order, clipped
};

/// Runs the comparison scripts of this process in one python process, which imports once what they import and forks
/// for each comparison: same arguments, output, statuses and limits as when an engine starts them. It is started at
/// the first comparison and again when it has died, ended by the destructor, and does not outlive this process.
/// Nothing that a script starts is left running. For as long as it lives it is the process's script runner.
class MoDiffScriptServer : public MoDiffScriptRunner {
public:
    /// Is told when the start of python, or of a script there, begins and when it is over: the time until then is
    /// none of the comparison's.
    using StartWatch = std::function<void(bool isStarting)>;

    /// @param watch may be empty
    explicit MoDiffScriptServer(StartWatch watch = {});
    ~MoDiffScriptServer() override;
    MoDiffScriptServer(MoDiffScriptServer const&) = delete;
    MoDiffScriptServer& operator=(MoDiffScriptServer const&) = delete;

    /// To be called before each comparison.
    /// @param resultFile takes the place of the file that a command names with -o
    void prepare(std::string const& resultFile);
    /// How the script of the comparison after prepare() ended.
    MoDiffScriptEnd const& getEnd() const { return m_end; }

    int run(char const* command, std::string const& masterFile, std::string const& actualFile) override;

private:
    bool start();
    void tellStart(bool isStarting) const;
    [[noreturn]] static void becomePython(int channel, int output);
    void stop();
    std::string request(char const* command, std::string const& masterFile, std::string const& actualFile) const;
    std::string ask(std::string const& request);
    std::string receive();
    int conclude(std::string const& answer);
    int concludeTrouble(MoDiffScriptEnd::Kind kind, std::string const& what);

    StartWatch m_watch;
    MoDiffScriptRunner* m_previous;
    pid_t m_process = 0; ///< 0 while there is none
    MoDiffDescriptor m_channel;
    MoDiffDescriptor m_outputPipe;
    MoDiffScriptOutput m_output;
    std::string m_resultFile;
    MoDiffScriptEnd m_end;
};

#endif
