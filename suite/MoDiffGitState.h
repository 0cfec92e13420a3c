#ifndef MO_DIFF_GIT_STATE_H
#define MO_DIFF_GIT_STATE_H

#include <map>
#include <set>
#include <string>

/// Which files have changes that git could not give back. Asks git once for each work tree; what lies in none has no
/// such changes.
class MoDiffGitState {
public:
    /// Whether a file lies in a work tree and differs from what is committed; true for one that git ignores neither
    /// nor knows.
    /// Raises std::runtime_error when git does not answer in a work tree.
    /// @param path of an existing file, absolute and without links
    bool hasUncommittedChanges(std::string const& path);

private:
    std::string const& workTreeOf(std::string const& directory);

    std::map<std::string, std::string> m_workTrees;         ///< by directory; "" for none
    std::map<std::string, std::set<std::string>> m_changed; ///< by work tree: absolute paths
};

#endif
