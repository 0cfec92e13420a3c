#include "MoDiffNewFiles.h"

#include "MoDiffDirectory.h"
#include "MoDiffMasterPlace.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <system_error>
#include <unordered_set>

namespace {

class Search {
public:
    Search(MoDiffSuiteConfiguration const& configuration, MoDiffPlan const& plan);

    void run(MoDiffPlan& plan);

private:
    using Extensions = std::set<std::string>;
    using Ancestors = std::vector<MoDiffDirectory::Identity>;

    void addDirectory(MoDiffMasterPlace const& place, std::string const& subDirectory);
    void search(std::string const& path, Extensions const& extensions, Ancestors& ancestors);
    void takeFiles(std::string const& path, Extensions const& extensions, MoDiffDirectory const& directory);

    bool m_isDeep; ///< whether sub-directories are those that are found
    std::unordered_set<std::string_view> m_claimed;
    std::map<std::string, Extensions> m_directories; ///< output directories, and what the files there end with
    std::set<std::string> m_unreadable;
    std::vector<std::string> m_searched;
    std::vector<std::string> m_files;
};

Search::Search(MoDiffSuiteConfiguration const& configuration, MoDiffPlan const& plan)
    : m_isDeep(!configuration.subDirectories) {
    m_claimed.reserve(plan.pairs.size());
    for (MoDiffPair const& pair : plan.pairs)
        m_claimed.insert(pair.actual);
    for (MoDiffMasterPlace const& place : MoDiffMasterPlace::all(configuration)) {
        if (!place.isSelected)
            continue;
        if (m_isDeep)
            addDirectory(place, "");
        else
            for (std::string const& subDirectory : *configuration.subDirectories)
                addDirectory(place, subDirectory);
    }
}

void Search::addDirectory(MoDiffMasterPlace const& place, std::string const& subDirectory) {
    MoDiffEngineSettings settings = place.settings;
    settings.subDirectory = subDirectory;
    m_directories[place.format->makeEngine(settings)->getOutputDirectory()].insert(place.extension());
}

void Search::run(MoDiffPlan& plan) {
    for (auto const& [path, extensions] : m_directories) {
        Ancestors ancestors;
        search(path, extensions, ancestors);
    }
    std::sort(m_files.begin(), m_files.end());
    m_files.erase(std::unique(m_files.begin(), m_files.end()), m_files.end());
    plan.newFiles = std::move(m_files);
    plan.outputs = std::move(m_searched);
    plan.unreadable.insert(plan.unreadable.end(), m_unreadable.begin(), m_unreadable.end());
}

void Search::search(std::string const& path, Extensions const& extensions, Ancestors& ancestors) {
    m_searched.push_back(path);
    try {
        MoDiffDirectory const directory = MoDiffDirectory::read(path);
        if (std::find(ancestors.begin(), ancestors.end(), directory.identity) != ancestors.end())
            return;
        ancestors.push_back(directory.identity);
        takeFiles(path, extensions, directory);
        if (m_isDeep)
            for (MoDiffDirectory::Entry const& entry : directory.others)
                search(path + "/" + entry.name, extensions, ancestors);
        ancestors.pop_back();
    } catch (std::system_error const& error) {
        if (error.code() != std::errc::no_such_file_or_directory)
            m_unreadable.insert(error.what());
    }
}

void Search::takeFiles(std::string const& path, Extensions const& extensions, MoDiffDirectory const& directory) {
    for (MoDiffDirectory::Entry const& entry : directory.files) {
        std::size_t const dot = entry.name.rfind('.');
        if (dot == std::string::npos || extensions.count(entry.name.substr(dot)) == 0)
            continue;
        std::string file = path + "/" + entry.name;
        if (m_claimed.count(file) == 0)
            m_files.push_back(std::move(file));
    }
}

} // namespace

void MoDiffNewFiles::find(MoDiffSuiteConfiguration const& configuration, MoDiffPlan& plan) {
    Search(configuration, plan).run(plan);
}
