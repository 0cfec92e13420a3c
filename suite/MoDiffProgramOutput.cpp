#include "MoDiffProgramOutput.h"

#include "MoDiffDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

namespace {

std::string readToEnd(int descriptor) {
    std::string text;
    char block[4096];
    for (;;) {
        ssize_t const count = read(descriptor, block, sizeof block);
        if (count > 0)
            text.append(block, static_cast<std::size_t>(count));
        else if (count == 0 || errno != EINTR)
            return text;
    }
}

} // namespace

MoDiffProgramOutput MoDiffProgramOutput::of(std::vector<std::string> words) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) < 0)
        return {};
    MoDiffDescriptor const reading(ends[0]);
    MoDiffDescriptor writing(ends[1]);
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, writing.get(), STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int const error = posix_spawnp(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        return {};
    writing.reset();
    MoDiffProgramOutput output{false, readToEnd(reading.get())};
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    output.isGood = status == 0;
    return output;
}
