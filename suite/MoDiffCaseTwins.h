#ifndef MO_DIFF_CASE_TWINS_H
#define MO_DIFF_CASE_TWINS_H

#include <map>
#include <string>

/// Finds files whose names differ from a wanted one only in case. Keeps the names of the directory asked last.
class MoDiffCaseTwins {
public:
    /// The path of a file beside the wanted path; "" when there is none.
    std::string find(std::string const& path);

private:
    void list(std::string const& directory);

    std::string m_directory;
    bool m_isListed = false;
    std::multimap<std::string, std::string> m_names; ///< by their folded form
};

#endif
