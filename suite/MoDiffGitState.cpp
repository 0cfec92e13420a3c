#include "MoDiffGitState.h"

#include "MoDiffDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <vector>

extern char** environ;

namespace {

struct Answer {
    bool isGood = false;
    std::string text;
};

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

/// Runs git in a directory; nothing of what it complains about is shown.
Answer askGit(std::string const& directory, std::vector<std::string> const& words) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) < 0)
        return {};
    MoDiffDescriptor const reading(ends[0]);
    MoDiffDescriptor writing(ends[1]);
    std::vector<std::string> all = {"git", "--no-optional-locks", "-C", directory};
    all.insert(all.end(), words.begin(), words.end());
    std::vector<char*> arguments;
    for (std::string& word : all)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, writing.get(), STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int const error = posix_spawnp(&child, "git", &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        return {};
    writing.reset();
    Answer answer{false, readToEnd(reading.get())};
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    answer.isGood = status == 0;
    return answer;
}

/// The paths in what `git status --porcelain -z` prints, relative to the work tree: entries "XY path", behind a
/// renamed one the path that it had.
std::set<std::string> changedPaths(std::string const& workTree, std::string const& text) {
    std::set<std::string> paths;
    bool isOldName = false;
    for (std::size_t begin = 0, end; (end = text.find('\0', begin)) != std::string::npos; begin = end + 1) {
        std::string const entry = text.substr(begin, end - begin);
        if (isOldName || entry.size() < 4) {
            isOldName = false;
            continue;
        }
        paths.insert(workTree + "/" + entry.substr(3));
        isOldName = entry[0] == 'R' || entry[0] == 'C' || entry[1] == 'R';
    }
    return paths;
}

/// Whether a directory or one above it looks like a work tree.
bool isBelowGit(std::filesystem::path directory) {
    std::error_code ignored;
    for (;; directory = directory.parent_path()) {
        if (std::filesystem::exists(directory / ".git", ignored))
            return true;
        if (directory == directory.parent_path())
            return false;
    }
}

} // namespace

bool MoDiffGitState::hasUncommittedChanges(std::string const& path) {
    std::string const& workTree = workTreeOf(path.substr(0, path.rfind('/')));
    if (workTree.empty())
        return false;
    auto known = m_changed.find(workTree);
    if (known == m_changed.end()) {
        Answer const answer = askGit(workTree, {"status", "--porcelain", "-z", "--untracked-files=all"});
        if (!answer.isGood)
            throw std::runtime_error("git cannot tell what has changed in " + workTree);
        known = m_changed.emplace(workTree, changedPaths(workTree, answer.text)).first;
    }
    return known->second.count(path) > 0;
}

std::string const& MoDiffGitState::workTreeOf(std::string const& directory) {
    auto const known = m_workTrees.find(directory);
    if (known != m_workTrees.end())
        return known->second;
    std::string const asked = directory.empty() ? "/" : directory;
    Answer answer;
    if (isBelowGit(asked)) {
        answer = askGit(asked, {"rev-parse", "--show-toplevel"});
        if (!answer.isGood)
            throw std::runtime_error("git does not answer in " + asked);
    }
    if (!answer.text.empty() && answer.text.back() == '\n')
        answer.text.pop_back();
    return m_workTrees.emplace(directory, answer.text).first->second;
}
