#include "MoDiffGuardedFiles.h"

#include "MoDiffDiscovery.h"
#include "MoDiffMasterPlace.h"
#include "MoDiffToolCheck.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

std::string canonical(std::string const& name) {
    std::error_code ignored;
    return fs::weakly_canonical(fs::absolute(name, ignored), ignored).string();
}

/// The way from a directory to what lies in it; empty for what lies elsewhere.
fs::path pathInside(fs::path const& directory, fs::path const& name) {
    fs::path const path = name.lexically_relative(directory);
    return path.empty() || *path.begin() == ".." ? fs::path() : path;
}

bool hasMastersFolder(fs::path const& path) {
    return std::find(path.begin(), path.end(), MoDiffDiscovery::kMasters) != path.end();
}

} // namespace

MoDiffGuardedFiles::Identity MoDiffGuardedFiles::identityOf(std::string const& name) {
    struct stat status;
    if (stat(name.c_str(), &status) != 0) {
        return {{}, canonical(name)};
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

void MoDiffGuardedFiles::protectTree(MoDiffSuiteConfiguration const& configuration) {
    m_root = canonical(".");
    for (MoDiffMasterPlace const& place : MoDiffMasterPlace::all(configuration))
        m_outputs.push_back(canonical(place.format->makeEngine(place.settings)->getOutputDirectory()));
}

/// A link may lead into a folder of masters, or have its name.
void MoDiffGuardedFiles::requireOutside(std::string const& name, char const* what) const {
    std::string const path = canonical(name);
    for (std::string const& directory : m_outputs)
        if (!pathInside(directory, path).empty())
            throw std::runtime_error(
                std::string(what).append(" would lie among the actual files in ").append(directory) + ": " + name);
    fs::path const asGiven = fs::absolute(name).lexically_normal();
    if (!m_root.empty() &&
        (hasMastersFolder(pathInside(m_root, path)) || hasMastersFolder(pathInside(m_root, asGiven))))
        throw std::runtime_error(std::string(what) + " would lie among the masters: " + name);
}

void MoDiffGuardedFiles::claim(std::string const& name, char const* what) {
    requireOutside(name, what);
    if (char const* const other = find(name))
        throw std::runtime_error(std::string(what) + " would overwrite " + other + ", " + name);
    protect(name, what);
}

char const* MoDiffGuardedFiles::find(std::string const& name) const {
    auto const found = m_files.find(identityOf(name));
    return found == m_files.end() ? nullptr : found->second;
}
