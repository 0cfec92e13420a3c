#include "MoDiffScriptServer.h"

#include "MoDiffScriptServerText.h"
#include "MoDiffSignalName.h"
#include "MoDiffStrayProcesses.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sstream>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace {

int const kChannelInPython = 3;
std::size_t const kAnswerSize = 256;
int const kPassed = 0;
int const kDiffers = 1 << 8; // as std::system() gives the exit status 1

[[noreturn]] void fail(char const* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// What has come through a pipe that does not block; false at its end.
bool drain(int pipe, MoDiffScriptOutput& output) {
    std::array<char, 1 << 14> block;
    for (;;) {
        ssize_t const count = read(pipe, block.data(), block.size());
        if (count == 0)
            return false;
        if (count < 0 && errno != EINTR)
            return true;
        if (count > 0)
            output.add({block.data(), static_cast<std::size_t>(count)});
    }
}

} // namespace

MoDiffScriptServer::MoDiffScriptServer(StartWatch watch)
    : m_watch(std::move(watch)), m_previous(MoDiffScriptRunner::set(this)) {
}

MoDiffScriptServer::~MoDiffScriptServer() {
    MoDiffScriptRunner::set(m_previous);
    stop();
}

void MoDiffScriptServer::prepare(std::string const& resultFile) {
    m_resultFile = resultFile;
    m_end = {};
}

int MoDiffScriptServer::run(char const* command, std::string const& masterFile, std::string const& actualFile) {
    m_output.clear();
    if (!start())
        return concludeTrouble(MoDiffScriptEnd::eTrouble, "python ended before it could run the script");
    m_output.clear(); // what a start file of python prints is none of the script's words
    std::string const answer = ask(request(command, masterFile, actualFile));
    MoDiffStrayProcesses::end([this](pid_t child) { return child == m_process; });
    drain(m_outputPipe.get(), m_output);
    return conclude(answer);
}

/// Starts python unless it runs; false when it does not get as far as to take requests.
bool MoDiffScriptServer::start() {
    if (m_process)
        return true;
    tellStart(true);
    int channels[2];
    int pipes[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, channels) != 0)
        fail("cannot make a channel to python");
    m_channel = MoDiffDescriptor(channels[0]);
    MoDiffDescriptor channel(channels[1]);
    if (pipe2(pipes, O_CLOEXEC) != 0)
        fail("cannot make a pipe for python");
    m_outputPipe = MoDiffDescriptor(pipes[0]);
    MoDiffDescriptor output(pipes[1]);
    fcntl(m_outputPipe.get(), F_SETFL, O_NONBLOCK); // the status flags of this end only
    m_process = fork();
    if (m_process < 0) {
        m_process = 0;
        fail("cannot start python");
    }
    if (m_process == 0)
        becomePython(channel.get(), output.get());
    channel.reset();
    output.reset();
    if (!receive().empty())
        return true;
    stop();
    return false;
}

void MoDiffScriptServer::tellStart(bool isStarting) const {
    if (m_watch)
        m_watch(isStarting);
}

/// The new process; it ends together with the one that started it.
void MoDiffScriptServer::becomePython(int channel, int output) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    int const input = open("/dev/null", O_RDONLY);
    int const channelCopy = fcntl(channel, F_DUPFD, kChannelInPython + 1); // not to be overwritten by what follows
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    dup2(channelCopy, kChannelInPython);
    close(channelCopy);
    std::string const descriptor = std::to_string(kChannelInPython);
    execlp("python", "python", "-c", kMoDiffScriptServerText, descriptor.c_str(), nullptr);
    dprintf(STDERR_FILENO, "python: %s\n", std::strerror(errno));
    _exit(127);
}

void MoDiffScriptServer::stop() {
    if (m_process) {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
        m_process = 0;
        MoDiffStrayProcesses::end([](pid_t) { return false; });
    }
    m_channel.reset();
    if (m_outputPipe)
        drain(m_outputPipe.get(), m_output);
    m_outputPipe.reset();
}

/// The script and its arguments, from a command line whose first quotation mark stands before the master's name.
std::string MoDiffScriptServer::request(char const* command, std::string const& masterFile,
                                        std::string const& actualFile) const {
    std::istringstream words(std::string(command, std::strcspn(command, "\"")));
    std::string text;
    std::string word;
    words >> word; // the interpreter
    for (bool isResultFile = false; words >> word; isResultFile = word == "-o")
        text.append(isResultFile ? m_resultFile : word) += '\0';
    return text.append(masterFile).append(1, '\0').append(actualFile);
}

/// Sends a request and returns its answer, "" when python has died. Before the answer comes word that the script is
/// read and has imported what it needs, which takes long for the first comparison only.
std::string MoDiffScriptServer::ask(std::string const& request) {
    tellStart(true);
    std::string answer;
    if (send(m_channel.get(), request.data(), request.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(request.size()) &&
        !receive().empty()) {
        tellStart(false);
        answer = receive();
    }
    if (answer.empty())
        stop();
    return answer;
}

/// Waits for a message from python, "" when it has died, and takes up what is printed until then.
std::string MoDiffScriptServer::receive() {
    pollfd events[] = {{m_channel.get(), POLLIN, 0}, {m_outputPipe.get(), POLLIN, 0}};
    for (;;) {
        if (poll(events, 2, -1) < 0 && errno != EINTR)
            fail("cannot wait for python");
        if (events[1].revents && !drain(m_outputPipe.get(), m_output))
            events[1].fd = -1; // closed by the script's doing; the answer still comes
        if (!events[0].revents)
            continue;
        std::array<char, kAnswerSize> answer;
        ssize_t const count = recv(m_channel.get(), answer.data(), answer.size(), 0);
        return {answer.data(), static_cast<std::size_t>(count > 0 ? count : 0)};
    }
}

int MoDiffScriptServer::conclude(std::string const& answer) {
    std::istringstream words(answer);
    std::string how;
    int number = 0;
    bool hasCompared = false;
    words >> how >> number >> hasCompared;
    if (how == "memory")
        return concludeTrouble(MoDiffScriptEnd::eMemory, "the script ran out of memory");
    if (how == "signal")
        return concludeTrouble(MoDiffScriptEnd::eCrashed, "the script was ended by " + MoDiffSignalName::of(number));
    if (how == "raised")
        return concludeTrouble(MoDiffScriptEnd::eTrouble, "the script failed");
    if (how != "exit")
        return concludeTrouble(MoDiffScriptEnd::eTrouble, "the python process that ran the script died");
    if (number > 1)
        return concludeTrouble(MoDiffScriptEnd::eTrouble, "the script ended with status " + std::to_string(number));
    if (number == 0 && !hasCompared && m_output.isEmpty())
        return concludeTrouble(MoDiffScriptEnd::eTrouble,
                               "the script ended with status 0, but opened neither file and said nothing");
    m_end = {MoDiffScriptEnd::eCompared, "", m_output.getText()};
    return number == 0 ? kPassed : kDiffers;
}

int MoDiffScriptServer::concludeTrouble(MoDiffScriptEnd::Kind kind, std::string const& what) {
    std::string const words = m_output.getLastLine();
    m_end = {kind, words.empty() ? what : what + ": " + words, m_output.getText()};
    return kDiffers;
}
