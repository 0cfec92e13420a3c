#include "MoDiffGitState.h"

#include "MoDiffProgramOutput.h"

#include <filesystem>
#include <stdexcept>
#include <vector>

namespace {

MoDiffProgramOutput askGit(std::string const& directory, std::vector<std::string> const& words) {
    std::vector<std::string> all = {"git", "--no-optional-locks", "-C", directory};
    all.insert(all.end(), words.begin(), words.end());
    return MoDiffProgramOutput::of(all);
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
        MoDiffProgramOutput const answer = askGit(workTree, {"status", "--porcelain", "-z", "--untracked-files=all"});
        if (!answer.isGood)
            throw std::runtime_error("git cannot tell what has changed in " + workTree);
        known = m_changed.emplace(workTree, changedPaths(workTree, answer.bytes)).first;
    }
    return known->second.count(path) > 0;
}

std::string const& MoDiffGitState::workTreeOf(std::string const& directory) {
    auto const known = m_workTrees.find(directory);
    if (known != m_workTrees.end())
        return known->second;
    std::string const asked = directory.empty() ? "/" : directory;
    MoDiffProgramOutput answer;
    if (isBelowGit(asked)) {
        answer = askGit(asked, {"rev-parse", "--show-toplevel"});
        if (!answer.isGood)
            throw std::runtime_error("git does not answer in " + asked);
    }
    if (!answer.bytes.empty() && answer.bytes.back() == '\n')
        answer.bytes.pop_back();
    return m_workTrees.emplace(directory, answer.bytes).first->second;
}
