#include "MoDiffPairSetups.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

fs::path normal(fs::path const& path) {
    return fs::absolute(path).lexically_normal();
}

/// Where a path lies below a directory; empty when it does not.
fs::path below(fs::path const& directory, fs::path const& path) {
    fs::path const relative = path.lexically_relative(directory);
    return relative.empty() || *relative.begin() == ".." || relative == "." ? fs::path() : relative;
}

/// A path as a plan has it: from the current directory where it lies there.
std::string planned(fs::path const& path) {
    fs::path const relative = below(fs::current_path(), path);
    return relative.empty() ? path.string() : "./" + relative.string();
}

} // namespace

MoDiffPairSetups::MoDiffPairSetups(MoDiffSuiteConfiguration const& configuration)
    : m_places(MoDiffMasterPlace::all(configuration)) {
}

MoDiffEngineSetup const* MoDiffPairSetups::find(MoDiffPairResult const& pair) {
    auto const fits = [&pair](MoDiffEngineSetup const& setup) {
        return pair.format == setup.format->word && pair.subDirectory == setup.settings.subDirectory &&
               setup.format->makeEngine(setup.settings)->getActualFile(pair.master) == pair.actual;
    };
    auto const known = std::find_if(m_setups.begin(), m_setups.end(), fits);
    if (known != m_setups.end())
        return &*known;
    for (MoDiffMasterPlace const& place : m_places) {
        m_setups.push_back({place.format, place.settings});
        m_setups.back().settings.subDirectory = pair.subDirectory;
        if (fits(m_setups.back()))
            return &m_setups.back();
        m_setups.pop_back();
    }
    return nullptr;
}

MoDiffPairResult MoDiffPairSetups::placeNew(std::string const& actual, std::string const& under) const {
    fs::path const file = normal(actual);
    fs::path masters = normal(under.empty() ? "." : under);
    if (!masters.has_filename())
        masters = masters.parent_path();
    if (masters.filename() != "Masters")
        masters /= "Masters";
    MoDiffPairResult pair;
    for (MoDiffMasterPlace const& place : m_places) {
        fs::path const relative =
            below(normal(place.format->makeEngine(place.settings)->getOutputDirectory() + "/.").parent_path(), file);
        if (!place.isSelected || relative.empty() || !place.takes(file.filename().string()))
            continue;
        if (!pair.format.empty())
            throw std::runtime_error("may be of the format " + pair.format + " or " + place.format->word);
        pair.format = place.format->word;
        pair.subDirectory = relative.parent_path().string();
        pair.master = planned((masters / relative.parent_path() / place.folder / file.filename()).lexically_normal());
        MoDiffEngineSettings settings = place.settings;
        settings.subDirectory = pair.subDirectory;
        pair.actual = place.format->makeEngine(settings)->getActualFile(pair.master);
        pair.id = MoDiffPlan::idOf(*place.format, pair.master);
    }
    if (pair.format.empty())
        throw std::runtime_error("no format has such a file in its output directory");
    if (normal(pair.actual) != file)
        throw std::runtime_error("a master of this name would be compared with " + pair.actual);
    return pair;
}
