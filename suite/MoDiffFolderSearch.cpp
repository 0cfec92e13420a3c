#include "MoDiffFolderSearch.h"

#include "MoDiffDirectory.h"
#include "MoDiffTomlText.h"
#include "MoDiffWorkingDirectory.h"

#include <algorithm>
#include <map>
#include <set>
#include <system_error>

namespace {

using Texts = std::vector<std::string>;
using Table = MoDiffFolderSearch::Table;

/// More than that are no suffixes but parts of names.
std::size_t constexpr kMostSuffixes = 8;

/// The directory's entries; none when it cannot be read, which the search for masters has told.
MoDiffDirectory entriesOf(std::string const& path) {
    try {
        return MoDiffDirectory::read(path);
    } catch (std::system_error const&) {
        return {};
    }
}

/// Where a format with tables looks that has such a folder.
MoDiffMasterPlace placeOf(MoDiffFormatRow const& row, MoDiffConfiguredFolder const& folder) {
    MoDiffSuiteConfiguration configuration;
    (row.takesSuffix ? configuration.charts : configuration.properties).push_back(folder);
    auto const places = MoDiffMasterPlace::all(configuration);
    return *std::find_if(places.begin(), places.end(),
                         [&row](MoDiffMasterPlace const& place) { return place.format == &row; });
}

/// The beginnings of a path, "" and itself among them, shortest first.
Texts beginnings(std::string const& path) {
    Texts all = {""};
    for (std::size_t end = 0; end < path.size(); ++end) {
        end = std::min(path.find('/', end), path.size());
        all.push_back(path.substr(0, end));
    }
    return all;
}

/// What follows the last "_" of a master's name, without the ending; "" for none that a table could name.
std::string suffixOf(std::string const& master, std::string const& ending) {
    std::size_t const begin = master.rfind('_') + 1; // none: npos + 1 is 0
    std::size_t const end = master.size() - ending.size();
    std::string const suffix = begin == 0 || begin >= end ? "" : master.substr(begin, end - begin);
    return suffix.find_first_of("*/") == std::string::npos ? suffix : "";
}

class Search {
public:
    Search(MoDiffSuiteConfiguration const& configuration, MoDiffPlan const& plan, MoDiffFormatRow const& row);

    void run(MoDiffDiscovery::Found const& found, std::vector<Table>& tables);

private:
    /// A master, and the sub-directory that the rest of its path leaves.
    struct Master {
        std::string path;
        std::string subDirectory;
    };
    using Masters = std::vector<Master>;
    /// How many masters have their actual file there.
    struct Hits {
        std::string typeName;
        std::size_t count = 0;
    };

    Texts subDirectoriesFor(std::string const& inside) const;
    void takeDirectory(std::string const& directory, Texts const& masters);
    bool isActual(Master const& master, std::string const& typeName);
    std::set<std::string> const& actualsIn(std::string const& typeName, std::string const& subDirectory);
    Hits bestType(Masters const& masters);
    std::size_t countAnywhere(Masters const& masters);
    std::string guessedType();
    bool splitBySuffix(std::string const& folder, Masters const& masters, std::vector<Table>& tables);
    void addTables(std::string const& folder, Masters const& masters, std::vector<Table>& tables);

    MoDiffSuiteConfiguration const& m_configuration;
    MoDiffFormatRow const& m_row;
    MoDiffMasterPlace const m_anyPlace; ///< that of masters of any suffix
    Texts m_types;                      ///< names of output directories
    std::set<std::string> m_languages;  ///< sub-directories that hold masters of other formats
    std::map<std::string, Masters> m_folders;
    std::map<std::pair<std::string, std::string>, std::set<std::string>> m_actuals; ///< by type and sub-directory
};

Search::Search(MoDiffSuiteConfiguration const& configuration, MoDiffPlan const& plan, MoDiffFormatRow const& row)
    : m_configuration(configuration), m_row(row), m_anyPlace(placeOf(row, {"any", "", "", ""})) {
    for (MoDiffDirectory::Entry const& entry : entriesOf(MoDiffWorkingDirectory::outputRoot()).others)
        if (MoDiffTomlText::canHold(entry.name))
            m_types.push_back(entry.name);
    for (MoDiffPair const& pair : plan.pairs)
        m_languages.insert(pair.setup->settings.subDirectory);
    m_languages.insert("");
}

void Search::run(MoDiffDiscovery::Found const& found, std::vector<Table>& tables) {
    for (auto const& [directory, number] : found.idle) {
        Texts masters;
        for (MoDiffDirectory::Entry const& file : entriesOf(directory).files)
            if (m_anyPlace.takes(file.name))
                masters.push_back(directory + "/" + file.name);
        if (!masters.empty())
            takeDirectory(directory, masters);
    }
    for (auto const& [folder, masters] : m_folders)
        addTables(folder, masters, tables);
}

/// The likeliest first: languages, the longest before others, then what may be one.
Texts Search::subDirectoriesFor(std::string const& inside) const {
    Texts all;
    for (std::string const& beginning : beginnings(inside)) {
        bool isNamed = true;
        if (auto const& named = m_configuration.subDirectories)
            isNamed = std::find(named->begin(), named->end(), beginning) != named->end();
        if (isNamed)
            all.push_back(beginning);
    }
    auto const languages = std::stable_partition(
        all.begin(), all.end(), [this](std::string const& text) { return m_languages.count(text) != 0; });
    std::reverse(all.begin(), languages);
    return all;
}

void Search::takeDirectory(std::string const& directory, Texts const& paths) {
    std::size_t const folderEnd = MoDiffDiscovery::mastersFolderOf(directory).size();
    std::string const inside = directory.size() > folderEnd ? directory.substr(folderEnd + 1) : "";
    Masters best;
    std::size_t most = 0;
    for (std::string const& subDirectory : subDirectoriesFor(inside)) {
        Masters masters;
        for (std::string const& path : paths)
            masters.push_back({path, subDirectory});
        std::size_t const hits = bestType(masters).count;
        if (best.empty() || hits > most)
            best = std::move(masters);
        most = std::max(most, hits);
    }
    if (best.empty())
        return;
    std::size_t const begin = best.front().subDirectory.size();
    std::string const folder = inside.substr(inside.size() > begin && begin > 0 ? begin + 1 : begin);
    if (MoDiffTomlText::canHold(folder))
        m_folders[folder].insert(m_folders[folder].end(), best.begin(), best.end());
}

std::set<std::string> const& Search::actualsIn(std::string const& typeName, std::string const& subDirectory) {
    auto const [actuals, isNew] = m_actuals.try_emplace({typeName, subDirectory});
    if (isNew) {
        MoDiffEngineSettings const settings = {subDirectory, typeName, "", ""};
        std::string const directory = m_row.makeEngine(settings)->getOutputDirectory();
        for (MoDiffDirectory::Entry const& file : entriesOf(directory).files)
            if (m_anyPlace.takes(file.name))
                actuals->second.insert(file.name);
    }
    return actuals->second;
}

bool Search::isActual(Master const& master, std::string const& typeName) {
    return actualsIn(typeName, master.subDirectory).count(master.path.substr(master.path.rfind('/') + 1)) != 0;
}

Search::Hits Search::bestType(Masters const& masters) {
    Hits best;
    for (std::string const& typeName : m_types) {
        auto const hits = std::count_if(masters.begin(), masters.end(),
                                        [&](Master const& master) { return isActual(master, typeName); });
        if (static_cast<std::size_t>(hits) > best.count)
            best = {typeName, static_cast<std::size_t>(hits)};
    }
    return best;
}

std::size_t Search::countAnywhere(Masters const& masters) {
    auto const isAnywhere = [this](Master const& master) {
        return std::any_of(m_types.begin(), m_types.end(),
                           [&](std::string const& typeName) { return isActual(master, typeName); });
    };
    return static_cast<std::size_t>(std::count_if(masters.begin(), masters.end(), isAnywhere));
}

/// An output directory that holds files of the kind, or the name that it has by custom.
std::string Search::guessedType() {
    for (std::string const& typeName : m_types)
        if (!actualsIn(typeName, "").empty())
            return typeName;
    std::string name = "v5Debug";
    for (char const* letter = m_row.word; *letter != '\0'; ++letter)
        name += *letter >= 'a' && *letter <= 'z' ? static_cast<char>(*letter - 'a' + 'A') : *letter;
    return name;
}

/// Charts of one folder may belong to output directories by their suffixes.
bool Search::splitBySuffix(std::string const& folder, Masters const& masters, std::vector<Table>& tables) {
    std::map<std::string, Masters> suffixes;
    for (Master const& master : masters)
        suffixes[suffixOf(master.path, m_anyPlace.ending)].push_back(master);
    if (!m_row.takesSuffix || suffixes.size() > kMostSuffixes || suffixes.count("") != 0)
        return false;
    std::vector<Table> split;
    std::set<std::string> types;
    for (auto const& [suffix, its] : suffixes) {
        Hits const best = bestType(its);
        types.insert(best.typeName);
        split.push_back({&m_row, {best.typeName, folder, suffix, ""}, /*isGuess=*/false});
        if (best.count == 0 || !MoDiffTomlText::canHold(suffix))
            return false;
    }
    if (types.size() < 2)
        return false;
    tables.insert(tables.end(), split.begin(), split.end());
    return true;
}

void Search::addTables(std::string const& folder, Masters const& masters, std::vector<Table>& tables) {
    Hits const best = bestType(masters);
    if (best.count < countAnywhere(masters) && splitBySuffix(folder, masters, tables))
        return;
    bool const isGuess = best.count == 0;
    tables.push_back({&m_row, {isGuess ? guessedType() : best.typeName, folder, "", ""}, isGuess});
}

} // namespace

std::vector<Table> MoDiffFolderSearch::find(MoDiffSuiteConfiguration const& configuration, MoDiffPlan const& plan,
                                            MoDiffDiscovery::Found const& found) {
    std::vector<Table> tables;
    for (MoDiffFormatRow const& row : MoDiffFormatTable::rows())
        if (row.takesDirectories)
            Search(configuration, plan, row).run(found, tables);
    return tables;
}
