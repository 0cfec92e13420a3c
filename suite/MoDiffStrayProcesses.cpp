#include "MoDiffStrayProcesses.h"

#include <cctype>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/// A process's parent; 0 when it has gone.
pid_t parentOf(std::string const& process) {
    std::ifstream file("/proc/" + process + "/stat");
    std::string text;
    std::getline(file, text, '\0');
    std::size_t const name = text.rfind(')'); // the program's name may hold anything
    if (name == std::string::npos)
        return 0;
    std::istringstream rest(text.substr(name + 1));
    char state = 0;
    pid_t parent = 0;
    rest >> state >> parent;
    return parent;
}

/// For kernels that list no children.
std::vector<pid_t> searchChildren() {
    std::vector<pid_t> children;
    std::error_code error;
    for (fs::directory_iterator entry("/proc", error), end; !error && entry != end; entry.increment(error)) {
        std::string const name = entry->path().filename().string();
        if (std::isdigit(static_cast<unsigned char>(name[0])) && parentOf(name) == getpid())
            children.push_back(std::atoi(name.c_str()));
    }
    return children;
}

} // namespace

void MoDiffStrayProcesses::adopt() {
    prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
}

std::vector<pid_t> MoDiffStrayProcesses::list() {
    std::string const process = std::to_string(getpid());
    std::ifstream file("/proc/self/task/" + process + "/children");
    if (!file.is_open())
        return searchChildren();
    std::vector<pid_t> children;
    for (pid_t child = 0; file >> child;)
        children.push_back(child);
    return children;
}

void MoDiffStrayProcesses::end(std::function<bool(pid_t)> const& isKnown) {
    for (bool isClean = false; !isClean;) {
        isClean = true;
        for (pid_t const child : list()) {
            if (isKnown(child))
                continue;
            isClean = false; // its own children come next
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
        }
    }
}
