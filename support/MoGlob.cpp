#include "MoGlob.h"

#include "MoDirectoryListing.h"

#include <cstring>

namespace {

/// Matches a name against a pattern in which "*" stands for any run of bytes. Only the latest wildcard is ever
/// moved, since an earlier one can leave the rest of the name to it; so the cost is bounded by the product of the
/// lengths.
bool matches(char const* pattern, char const* name) {
    char const* wildcard = nullptr;
    char const* resumeAt = nullptr;
    while (*name) {
        if (*pattern == '*') {
            wildcard = pattern++;
            resumeAt = name;
        } else if (*pattern == *name) {
            ++pattern;
            ++name;
        } else if (wildcard) {
            pattern = wildcard + 1;
            name = ++resumeAt;
        } else {
            return false;
        }
    }
    while (*pattern == '*')
        ++pattern;
    return !*pattern;
}

} // namespace

int MoGlob::globFiles(char const* pattern, std::list<std::string>& files) {
    char const* const slash = std::strrchr(pattern, '/');
    char const* const namePattern = slash ? slash + 1 : pattern;
    std::string const directoryPart(pattern, namePattern);
    std::string const fixedStart(namePattern, std::strcspn(namePattern, "*"));

    std::list<std::string> found;
    int count = 0;
    MoDirectoryListing const listing(directoryPart.empty() ? "." : directoryPart);
    for (auto entry = listing.firstFrom(fixedStart); entry != listing.end(); ++entry) {
        if (entry->compare(0, fixedStart.size(), fixedStart) != 0)
            break;
        std::string path = directoryPart + *entry;
        if (matches(namePattern, entry->c_str()) && !MoDirectoryListing::isDirectory(path)) {
            found.push_back(std::move(path));
            ++count;
        }
    }
    files.splice(files.end(), found);
    return count;
}
