#include "MoDiffDiscovery.h"

#include "MoDiffDirectory.h"
#include "MoDiffNearestWord.h"
#include "MoDiffPathGlob.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <system_error>

namespace {

using MoDiffDiscovery::kMasters;

std::string joined(std::string const& directory, std::string const& name) {
    return directory.empty() ? name : directory + "/" + name;
}

std::string lastStep(std::string const& path) {
    return path.substr(path.rfind('/') + 1);
}

/// Whether a path inside of "Masters" is, or ends with, a format's folder.
bool endsWithFolder(std::string const& path, std::string const& folder) {
    if (folder.empty() || path.size() < folder.size())
        return false;
    std::size_t const rest = path.size() - folder.size();
    return path.compare(rest, folder.size(), folder) == 0 && (rest == 0 || path[rest - 1] == '/');
}

class Search {
public:
    Search(MoDiffSuiteConfiguration const& configuration, MoDiffPlan& plan, MoDiffPlan::Progress const& progress)
        : m_configuration(configuration), m_plan(plan), m_progress(progress),
          m_places(MoDiffMasterPlace::all(configuration)),
          m_excludes(configuration.exclude.begin(), configuration.exclude.end()) {}

    MoDiffDiscovery::Found run();

private:
    /// A glob of the configuration, and whether it has left something out.
    struct Exclude {
        explicit Exclude(MoDiffExclude const& asked) : rule(asked), glob(asked.glob) {}
        MoDiffExclude const& rule;
        MoDiffPathGlob glob;
        bool isUsed = false;
    };
    /// An engine for the masters of one directory.
    struct Reader {
        MoDiffMasterPlace const* place;
        MoDiffEngineSetup const* setup;
        MoDiffFileEngine const* engine;
    };
    using Ancestors = std::vector<MoDiffDirectory::Identity>;

    void searchRoot(std::string const& root);
    void searchLinks();
    void search(std::string const& path);
    void searchFrom(std::string const& path, MoDiffDirectory const& directory);
    void searchMasters(std::string const& folder, MoDiffDirectory const& directory);
    void searchInside(std::string const& folder, std::string const& inside, MoDiffDirectory const& directory,
                      Ancestors& ancestors);
    void takeMasters(std::string const& path, std::vector<Reader> const& readers, MoDiffDirectory const& directory);
    void addPair(Reader const& reader, std::string const& master, bool isRegular);

    std::optional<MoDiffDirectory> read(std::string const& path, std::set<std::string>& failures);
    bool isExcluded(std::string const& path);
    bool isFormatFolder(std::string const& inside) const;
    bool isSubDirectory(std::string const& inside) const;
    std::vector<Reader> readersOf(std::string const& inside);
    Reader readerOf(MoDiffMasterPlace const& place, std::string const& subDirectory);
    void dropDuplicates();
    void findIdleRules();

    MoDiffSuiteConfiguration const& m_configuration;
    MoDiffPlan& m_plan;
    MoDiffPlan::Progress const& m_progress;
    std::vector<MoDiffMasterPlace> const m_places;
    std::vector<Exclude> m_excludes;

    MoDiffDiscovery::Found m_found;
    std::size_t m_directories = 0;
    std::set<MoDiffDirectory::Identity> m_searched;       ///< directories outside of "Masters"
    std::set<MoDiffDirectory::Identity> m_mastersFolders; ///< apart, since a link may give any directory that name
    std::vector<std::string> m_links;                     ///< to be searched when all real directories are done
    std::vector<std::unique_ptr<MoDiffFileEngine>> m_engines;
    std::map<std::pair<MoDiffMasterPlace const*, std::string>, Reader> m_readers; ///< by place and sub-directory
    std::map<MoDiffEngineSetup const*, MoDiffMasterPlace const*> m_setupPlaces;
    std::set<MoDiffMasterPlace const*> m_usedPlaces; ///< those with a master
};

MoDiffDiscovery::Found Search::run() {
    if (m_configuration.roots.empty())
        searchRoot("");
    for (std::string const& root : m_configuration.roots)
        searchRoot(root);
    searchLinks();
    std::sort(m_plan.pairs.begin(), m_plan.pairs.end(),
              [](MoDiffPair const& left, MoDiffPair const& right) { return left.id < right.id; });
    dropDuplicates();
    findIdleRules();
    m_plan.isWhole = m_found.unreadable.empty() && !m_configuration.isNarrowedByOption();
    return std::move(m_found);
}

void Search::searchRoot(std::string const& root) {
    std::string const folder = MoDiffDiscovery::mastersFolderOf(root);
    std::optional<MoDiffDirectory> const directory = read(root, m_found.badRoots);
    if (!directory)
        return;
    if (folder.empty()) {
        searchFrom(root, *directory);
    } else if (folder == root) {
        searchMasters(folder, *directory);
    } else {
        Ancestors ancestors;
        ++m_found.masterFolders;
        searchInside(folder, root.substr(folder.size() + 1), *directory, ancestors);
    }
}

/// Each link may lead to others; those are searched after all that lie nearer.
void Search::searchLinks() {
    while (!m_links.empty()) {
        std::vector<std::string> links;
        links.swap(m_links);
        std::sort(links.begin(), links.end());
        for (std::string const& link : links)
            search(link);
    }
}

void Search::search(std::string const& path) {
    std::optional<MoDiffDirectory> const directory = read(path, m_found.unreadable);
    if (!directory)
        return;
    if (lastStep(path) == kMasters)
        searchMasters(path, *directory);
    else
        searchFrom(path, *directory);
}

void Search::searchFrom(std::string const& path, MoDiffDirectory const& directory) {
    if (!m_searched.insert(directory.identity).second)
        return;
    for (MoDiffDirectory::Entry const& entry : directory.others) {
        std::string const below = joined(path, entry.name);
        if (isExcluded(below))
            continue;
        if (entry.name != kMasters && !MoDiffNearestWord::find(entry.name, {kMasters}).empty())
            m_found.nearlyMasters.insert(below);
        if (entry.kind == MoDiffDirectory::eDirectory)
            search(below);
        else
            m_links.push_back(below);
    }
}

void Search::searchMasters(std::string const& folder, MoDiffDirectory const& directory) {
    if (!m_mastersFolders.insert(directory.identity).second)
        return;
    ++m_found.masterFolders;
    Ancestors ancestors;
    searchInside(folder, "", directory, ancestors);
}

/// @param inside a directory's path from the folder "Masters" on
void Search::searchInside(std::string const& folder, std::string const& inside, MoDiffDirectory const& directory,
                          Ancestors& ancestors) {
    if (std::find(ancestors.begin(), ancestors.end(), directory.identity) != ancestors.end())
        return;
    ancestors.push_back(directory.identity);
    std::string const path = inside.empty() ? folder : joined(folder, inside);
    if (!inside.empty() && isSubDirectory(inside))
        m_found.subDirectories.insert(path);
    takeMasters(path, readersOf(inside), directory);
    for (MoDiffDirectory::Entry const& entry : directory.others) {
        std::string const below = joined(path, entry.name);
        if (isExcluded(below))
            continue;
        if (std::optional<MoDiffDirectory> const next = read(below, m_found.unreadable))
            searchInside(folder, joined(inside, entry.name), *next, ancestors);
    }
    ancestors.pop_back();
}

void Search::takeMasters(std::string const& path, std::vector<Reader> const& readers,
                         MoDiffDirectory const& directory) {
    for (MoDiffDirectory::Entry const& file : directory.files) {
        std::string const master = joined(path, file.name);
        if (!m_excludes.empty() && isExcluded(master))
            continue;
        bool isRead = false;
        for (Reader const& reader : readers) {
            if (!reader.place->takes(file.name))
                continue;
            isRead = true;
            if (reader.setup)
                addPair(reader, master, file.isRegular);
        }
        if (!isRead)
            ++m_found.idle[path];
    }
}

void Search::addPair(Reader const& reader, std::string const& master, bool isRegular) {
    m_usedPlaces.insert(reader.place);
    m_plan.pairs.push_back({MoDiffPlan::idOf(*reader.place->format, master),
                            reader.setup,
                            master,
                            reader.engine->getActualFile(master),
                            {},
                            isRegular});
}

std::optional<MoDiffDirectory> Search::read(std::string const& path, std::set<std::string>& failures) {
    try {
        m_plan.searched.push_back(path);
        MoDiffDirectory directory = MoDiffDirectory::read(path);
        if (m_progress)
            m_progress(++m_directories, m_plan.pairs.size());
        return directory;
    } catch (std::system_error const& error) {
        failures.insert(error.what());
        return std::nullopt;
    }
}

/// A glob that meets all that a directory can hold leaves out the directory itself.
/// Every glob is asked, so that idle ones are found.
bool Search::isExcluded(std::string const& path) {
    bool result = false;
    for (Exclude& exclude : m_excludes)
        if (exclude.glob.matches(path) || exclude.glob.matches(path + "/"))
            result = exclude.isUsed = true;
    return result;
}

bool Search::isFormatFolder(std::string const& inside) const {
    return std::any_of(m_places.begin(), m_places.end(),
                       [&inside](MoDiffMasterPlace const& place) { return endsWithFolder(inside, place.folder); });
}

/// Whether masters in a directory, or in a format's folder there, belong to it. Unless the configuration names the
/// sub-directories, that is each one that lies in no format's folder.
bool Search::isSubDirectory(std::string const& inside) const {
    if (m_configuration.subDirectories) {
        auto const& named = *m_configuration.subDirectories;
        return std::find(named.begin(), named.end(), inside) != named.end();
    }
    for (std::size_t end = 0; end < inside.size(); ++end) {
        end = std::min(inside.find('/', end), inside.size());
        if (isFormatFolder(inside.substr(0, end)))
            return false;
    }
    return true;
}

/// The engines that look for masters in a directory; those of formats that are not selected without a setup.
std::vector<Search::Reader> Search::readersOf(std::string const& inside) {
    std::vector<Reader> readers;
    for (MoDiffMasterPlace const& place : m_places) {
        std::string subDirectory = inside;
        if (!place.folder.empty()) {
            if (!endsWithFolder(inside, place.folder))
                continue;
            std::size_t const rest = inside.size() - place.folder.size();
            subDirectory.resize(rest == 0 ? 0 : rest - 1);
        }
        if (isSubDirectory(subDirectory))
            readers.push_back(place.isSelected ? readerOf(place, subDirectory) : Reader{&place, nullptr, nullptr});
    }
    return readers;
}

Search::Reader Search::readerOf(MoDiffMasterPlace const& place, std::string const& subDirectory) {
    auto const [reader, isNew] = m_readers.try_emplace({&place, subDirectory});
    if (isNew) {
        MoDiffEngineSetup& setup = m_plan.setups.emplace_back(MoDiffEngineSetup{place.format, place.settings});
        setup.settings.subDirectory = subDirectory;
        m_engines.push_back(place.format->makeEngine(setup.settings));
        reader->second = {&place, &setup, m_engines.back().get()};
        m_setupPlaces[&setup] = &place;
    }
    return reader->second;
}

/// A pair that was found from two roots, or by two tables that say the same, counts once.
void Search::dropDuplicates() {
    auto const isSame = [this](MoDiffPair const& left, MoDiffPair const& right) {
        if (left.id != right.id)
            return false;
        if (left.actual != right.actual)
            throw MoDiffConfigurationError(m_setupPlaces.at(right.setup)->origin + ": this table and that at " +
                                           m_setupPlaces.at(left.setup)->origin + " both claim " + left.master);
        return true;
    };
    auto& pairs = m_plan.pairs;
    pairs.erase(std::unique(pairs.begin(), pairs.end(), isSame), pairs.end());
}

void Search::findIdleRules() {
    for (Exclude const& exclude : m_excludes)
        if (!exclude.isUsed)
            m_found.idleExcludes.push_back(exclude.rule);
    for (MoDiffMasterPlace const& place : m_places)
        if (place.isSelected && !place.origin.empty() && m_usedPlaces.count(&place) == 0)
            m_found.idleTables.push_back(place);
}

} // namespace

std::string MoDiffDiscovery::mastersFolderOf(std::string const& path) {
    for (std::size_t begin = 0, end = 0; begin < path.size(); begin = end + 1) {
        end = std::min(path.find('/', begin), path.size());
        if (path.compare(begin, end - begin, kMasters) == 0)
            return path.substr(0, end);
    }
    return "";
}

MoDiffDiscovery::Found MoDiffDiscovery::find(MoDiffSuiteConfiguration const& configuration, MoDiffPlan& plan,
                                             MoDiffPlan::Progress const& progress) {
    return Search(configuration, plan, progress).run();
}
