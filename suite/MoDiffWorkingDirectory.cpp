#include "MoDiffWorkingDirectory.h"

#include "MoDiffConfigurationReader.h"
#include "MoDiffDirectory.h"
#include "MoDiffDiscovery.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

/// The folders "Masters" that hold anything.
std::set<std::string> mastersFolders(MoDiffPlan const& plan, MoDiffDiscovery::Found const& found) {
    std::set<std::string> folders;
    for (MoDiffPair const& pair : plan.pairs)
        folders.insert(MoDiffDiscovery::mastersFolderOf(pair.master));
    for (auto const& [directory, number] : found.idle)
        folders.insert(MoDiffDiscovery::mastersFolderOf(directory));
    return folders;
}

/// The nearest directory above one that sees the output; "" when there is none.
/// @param end where to stop, which is not asked any more
fs::path nearestAbove(fs::path directory, fs::path const& end) {
    while (directory != end && directory.has_relative_path()) {
        directory = directory.parent_path();
        if (directory != end && MoDiffWorkingDirectory::seesOutput(directory.string()))
            return directory;
    }
    return {};
}

} // namespace

std::string MoDiffWorkingDirectory::outputRoot() {
    MoDiffEngineSettings const settings;
    auto const engine = MoDiffFormatTable::rows().front().makeEngine(settings); // which keeps them by reference
    return fs::path(engine->getOutputDirectory()).parent_path().string();
}

bool MoDiffWorkingDirectory::seesOutput(std::string const& directory) {
    std::error_code ignored;
    fs::path const output = fs::path(directory) / outputRoot();
    return fs::is_directory(output, ignored) && !fs::equivalent(output, directory, ignored);
}

MoDiffWorkingDirectory MoDiffWorkingDirectory::find(MoDiffPlan::Progress const& progress) {
    MoDiffWorkingDirectory result;
    fs::path const here = MoDiffDirectory::current();
    if (seesOutput(here.string())) {
        result.found.insert(here.string());
        return result;
    }
    MoDiffSuiteConfiguration configuration = MoDiffConfigurationReader::read("");
    MoDiffConfigurationReader::resolve(configuration);
    MoDiffPlan plan;
    MoDiffDiscovery::Found const found = MoDiffDiscovery::find(configuration, plan, progress);
    result.masterFolders = found.masterFolders;
    result.unreadable = found.unreadable;
    result.nearlyMasters = found.nearlyMasters;
    std::error_code ignored;
    for (std::string const& folder : mastersFolders(plan, found)) {
        fs::path const nearest = nearestAbove(here / folder, here);
        if (!nearest.empty())
            result.found.insert(fs::weakly_canonical(nearest, ignored).string());
    }
    if (result.found.empty()) {
        fs::path const above = nearestAbove(here, {});
        if (!above.empty())
            result.found.insert(above.string());
    }
    return result;
}
