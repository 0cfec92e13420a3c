#include "MoDiffGuardedFiles.h"

#include "MoDiffFormatTable.h"
#include "MoDiffToolCheck.h"

#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>

MoDiffGuardedFiles::Identity MoDiffGuardedFiles::identityOf(std::string const& name) {
    struct stat status;
    if (stat(name.c_str(), &status) != 0) {
        std::error_code error;
        return {{}, std::filesystem::weakly_canonical(std::filesystem::absolute(name, error), error).string()};
    }
    if (!S_ISREG(status.st_mode))
        return {};
    return {{status.st_dev, status.st_ino}, ""};
}

bool MoDiffGuardedFiles::isFile(Identity const& identity) {
    return identity != Identity();
}

void MoDiffGuardedFiles::protect(std::string const& name, char const* what) {
    Identity const identity = identityOf(name);
    if (isFile(identity))
        m_files.emplace(identity, what);
}

void MoDiffGuardedFiles::protectScripts() {
    for (MoDiffFormatRow const& row : MoDiffFormatTable::rows())
        if (row.tool)
            protect(std::string(MoDiffToolCheck::kToolsDirectory) + row.tool->script, "a comparison script");
}

void MoDiffGuardedFiles::claim(std::string const& name, char const* what) {
    if (char const* const other = find(name))
        throw std::runtime_error(std::string(what) + " would overwrite " + other + ", " + name);
    protect(name, what);
}

char const* MoDiffGuardedFiles::find(std::string const& name) const {
    auto const found = m_files.find(identityOf(name));
    return found == m_files.end() ? nullptr : found->second;
}
