#include "MoDiffSurvey.h"

#include "MoDiffConfigurationReader.h"
#include "MoDiffDiscovery.h"
#include "MoDiffNewFiles.h"

#include <algorithm>
#include <sys/stat.h>

namespace {

using Tables = std::vector<MoDiffFolderSearch::Table>;

bool isThere(std::string const& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0;
}

class Surveyor {
public:
    Surveyor(MoDiffSuiteConfiguration const& configuration, MoDiffPlan::Progress const& progress)
        : m_wanted(configuration), m_progress(progress) {}

    MoDiffSurvey make();

private:
    bool isWanted(std::string const& format) const;
    MoDiffSuiteConfiguration configured(Tables const& tables) const;
    [[noreturn]] void failWithoutTable(std::string const& format) const;
    MoDiffPlan plan(Tables const& tables) const;
    bool keepsPairs(MoDiffPlan const& plan) const;
    bool serves(Tables const& tables);
    void choose(Tables const& tables);
    void count();
    void countIdle(MoDiffDiscovery::Found const& found);

    MoDiffSuiteConfiguration const& m_wanted;
    MoDiffPlan::Progress const& m_progress;
    MoDiffPlan m_plain; ///< of all formats that need no table
    MoDiffSurvey m_survey;
};

MoDiffSurvey Surveyor::make() {
    MoDiffSuiteConfiguration plain = m_wanted;
    plain.formats.clear();
    MoDiffConfigurationReader::resolve(plain);
    MoDiffDiscovery::Found const found = MoDiffDiscovery::find(plain, m_plain, m_progress);
    Tables tables = MoDiffFolderSearch::find(m_wanted, m_plain, found);
    tables.erase(std::remove_if(tables.begin(), tables.end(),
                                [this](auto const& table) { return !isWanted(table.format->word); }),
                 tables.end());
    choose(tables);
    m_survey.nearlyMasters = found.nearlyMasters;
    count();
    countIdle(found);
    bool const isWhole = m_survey.plan.unreadable.empty(); // otherwise what is new may have its master there
    if (isWhole && m_survey.configuration.newFiles != MoDiffSuiteConfiguration::eNewIgnore)
        MoDiffNewFiles::find(m_survey.configuration, m_survey.plan);
    return std::move(m_survey);
}

bool Surveyor::isWanted(std::string const& format) const {
    auto const& formats = m_wanted.formats;
    return formats.empty() || std::find(formats.begin(), formats.end(), format) != formats.end();
}

MoDiffSuiteConfiguration Surveyor::configured(Tables const& tables) const {
    MoDiffSuiteConfiguration configuration = m_wanted;
    for (MoDiffFolderSearch::Table const& table : tables)
        (table.format->takesSuffix ? configuration.charts : configuration.properties).push_back(table.folder);
    auto const hasTable = [&tables](std::string const& word) {
        return std::any_of(tables.begin(), tables.end(),
                           [&word](auto const& table) { return table.format->word == word; });
    };
    for (std::string const& word : m_wanted.formats)
        if (MoDiffFormatTable::find(word)->takesDirectories && !hasTable(word))
            failWithoutTable(word);
    MoDiffConfigurationReader::resolve(configuration);
    return configuration;
}

void Surveyor::failWithoutTable(std::string const& format) const {
    std::string reason = m_wanted.origins.at("formats");
    reason += ": no folder of Masters holds " + format + " files for which a table [[" + format + "]] could be made";
    throw MoDiffConfigurationError(reason);
}

MoDiffPlan Surveyor::plan(Tables const& tables) const {
    return MoDiffPlan::make(configured(tables), m_progress);
}

/// A table gives its folder's name a meaning, which takes masters of other formats out of it.
bool Surveyor::keepsPairs(MoDiffPlan const& plan) const {
    return std::all_of(m_plain.pairs.begin(), m_plain.pairs.end(), [&](MoDiffPair const& pair) {
        auto const place =
            std::lower_bound(plan.pairs.begin(), plan.pairs.end(), pair.id,
                             [](MoDiffPair const& candidate, std::string const& id) { return candidate.id < id; });
        bool const isKept = place != plan.pairs.end() && place->id == pair.id;
        return isKept || !isWanted(pair.setup->format->word);
    });
}

bool Surveyor::serves(Tables const& tables) {
    try {
        MoDiffPlan found = plan(tables);
        if (!keepsPairs(found))
            return false;
        m_survey.plan = std::move(found);
    } catch (MoDiffConfigurationError const&) { // two claim a master, or one meets none
        return false;
    }
    m_survey.tables = tables;
    return true;
}

/// Takes the tables that go together, and with what is there; all of them, unless a tree is odd.
void Surveyor::choose(Tables const& tables) {
    if (tables.empty() || !serves(tables)) {
        Tables chosen;
        for (MoDiffFolderSearch::Table const& table : tables) {
            chosen.push_back(table);
            if (!serves(chosen))
                chosen.pop_back();
        }
        m_survey.tables = chosen;
        m_survey.plan = plan(chosen);
    }
    m_survey.configuration = configured(m_survey.tables);
}

void Surveyor::count() {
    for (MoDiffFormatRow const& row : MoDiffFormatTable::rows()) {
        MoDiffSurvey::Format format = {&row};
        for (MoDiffPair const& pair : m_survey.plan.pairs) {
            if (pair.setup->format != &row)
                continue;
            ++format.masters;
            format.actuals += isThere(pair.actual);
            m_survey.subDirectories.insert(pair.setup->settings.subDirectory);
            m_survey.roots.insert(pair.master.substr(0, pair.master.find('/')));
        }
        if (format.masters > 0)
            m_survey.formats.push_back(format);
    }
}

/// What a table reads is not idle any more.
void Surveyor::countIdle(MoDiffDiscovery::Found const& found) {
    m_survey.idle = found.idle;
    for (MoDiffPair const& pair : m_survey.plan.pairs) {
        auto const directory = m_survey.idle.find(pair.master.substr(0, pair.master.rfind('/')));
        if (pair.setup->format->takesDirectories && directory != m_survey.idle.end() && --directory->second == 0)
            m_survey.idle.erase(directory);
    }
}

} // namespace

MoDiffSurvey MoDiffSurvey::make(MoDiffSuiteConfiguration const& configuration, MoDiffPlan::Progress const& progress) {
    return Surveyor(configuration, progress).make();
}
