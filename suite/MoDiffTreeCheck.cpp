#include "MoDiffTreeCheck.h"

#include "MoDiffCaseTwins.h"
#include "MoDiffDiscovery.h"
#include "MoDiffExpectations.h"
#include "MoDiffIdleRules.h"
#include "MoDiffMasterPlace.h"
#include "MoDiffNearestWord.h"
#include "MoDiffPlan.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

/// Findings of one kind that are told one by one; a tree in which all is wrong need not be listed.
std::size_t constexpr kMostOfAKind = 20;

std::string directoryOf(std::string const& path) {
    std::size_t const slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

std::string lastStep(std::string const& path) {
    return path.substr(path.rfind('/') + 1);
}

std::string counted(std::size_t number, std::string const& thing) {
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

bool isThere(std::string const& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0;
}

/// Why a master cannot be compared; "" when it can.
std::string obstacleTo(std::string const& master) {
    struct stat status;
    if (stat(master.c_str(), &status) != 0 || access(master.c_str(), R_OK) != 0)
        return std::generic_category().message(errno);
    return S_ISREG(status.st_mode) ? "" : "it is no regular file";
}

class Examination {
public:
    explicit Examination(MoDiffSuiteConfiguration const& configuration) : m_configuration(configuration) {}

    std::vector<MoDiffFinding> run();

private:
    /// Findings of one kind.
    class Kind {
    public:
        Kind(Examination& examination, MoDiffFinding::Severity severity, std::string remedy)
            : m_examination(examination), m_severity(severity), m_remedy(std::move(remedy)) {}
        Kind(Kind const&) = delete;
        Kind& operator=(Kind const&) = delete;
        ~Kind() = default;

        void add(std::string const& text) {
            if (++m_count <= kMostOfAKind)
                m_examination.m_findings.push_back({m_severity, "tree", text, m_remedy});
        }
        void close() {
            if (m_count > kMostOfAKind)
                m_examination.m_findings.push_back({m_severity, "tree",
                                                    counted(m_count - kMostOfAKind, "more finding") + " of this kind",
                                                    m_remedy});
        }

    private:
        Examination& m_examination;
        MoDiffFinding::Severity m_severity;
        std::string m_remedy;
        std::size_t m_count = 0;
    };

    void checkFolders();
    void checkRoots();
    void checkMisspelt();
    void checkIdle();
    void checkMasters();
    void checkOutputDirectories();
    void checkCase();
    void checkShared();
    void checkRules();
    bool hasMasterBelow(std::string const& start) const;
    bool isMisspelt(std::string const& directory) const { return m_misspelt.count(directory) != 0; }

    MoDiffSuiteConfiguration const& m_configuration;
    MoDiffPlan m_plan;
    MoDiffDiscovery::Found m_found;
    std::map<std::string, std::string> m_misspelt; ///< directories, and the format's folder that they look like
    std::vector<MoDiffFinding> m_findings;
};

std::vector<MoDiffFinding> Examination::run() {
    try {
        m_found = MoDiffDiscovery::find(m_configuration, m_plan, {});
        m_plan.complete(m_configuration);
    } catch (MoDiffConfigurationError const& error) {
        m_findings.push_back({MoDiffFinding::eTrouble, "tree", error.what(), "correct the configuration"});
        return std::move(m_findings);
    }
    checkFolders();
    checkRoots();
    checkMisspelt();
    checkIdle();
    checkMasters();
    checkOutputDirectories();
    checkCase();
    checkShared();
    checkRules();
    return std::move(m_findings);
}

void Examination::checkFolders() {
    Kind unreadable(*this, MoDiffFinding::eTrouble, "let the user who runs modiff read it, or exclude it");
    for (std::set<std::string> const* const sentences : {&m_found.badRoots, &m_found.unreadable})
        for (std::string const& sentence : *sentences)
            unreadable.add(sentence);
    unreadable.close();
    if (m_found.masterFolders == 0)
        m_findings.push_back({MoDiffFinding::eTrouble, "tree",
                              "there is no folder Masters below " + m_configuration.workingDirectory,
                              "change to the directory from which ../webcontent is seen, or name it as "
                              "working-directory in modiff.toml"});
    else
        m_findings.push_back(
            {MoDiffFinding::eFine, "tree",
             counted(m_plan.pairs.size(), "master") + " in " + counted(m_found.masterFolders, "folder") + " Masters",
             ""});
}

void Examination::checkRoots() {
    Kind empty(*this, MoDiffFinding::eTrouble, "correct roots, or look at what exclude and formats leave out");
    for (std::string const& root : m_configuration.roots) {
        std::string const start = root.empty() ? "" : root + "/";
        if (!hasMasterBelow(start))
            empty.add("the root " + (root.empty() ? "." : root) + " holds no master");
    }
    empty.close();
}

/// @param start of paths; "" or a directory that ends with "/"
bool Examination::hasMasterBelow(std::string const& start) const {
    return std::any_of(m_plan.pairs.begin(), m_plan.pairs.end(),
                       [&start](MoDiffPair const& pair) { return pair.master.compare(0, start.size(), start) == 0; });
}

void Examination::checkMisspelt() {
    std::vector<std::string> folders;
    for (MoDiffMasterPlace const& place : MoDiffMasterPlace::all(m_configuration))
        if (!place.folder.empty())
            folders.push_back(place.folder);
    Kind misspelt(*this, MoDiffFinding::eTrouble, "give it the format's name");
    Kind empty(*this, MoDiffFinding::eAdvice, "give it the format's name before masters come there");
    for (std::string const& directory : m_found.subDirectories) {
        std::string const folder = MoDiffNearestWord::find(lastStep(directory), folders);
        if (folder.empty())
            continue;
        std::string words = "the directory ";
        words.append(directory).append(" looks like ").append(folder);
        if (m_found.idle.count(directory) == 0) {
            if (!hasMasterBelow(directory + "/"))
                empty.add(words.append(", and holds no master"));
            continue;
        }
        m_misspelt[directory] = folder;
        misspelt.add(words.append(", but no format reads its files"));
    }
    misspelt.close();
    empty.close();
    Kind masters(*this, MoDiffFinding::eAdvice, "call it Masters if it holds masters");
    for (std::string const& directory : m_found.nearlyMasters)
        masters.add("the directory " + directory + " is not searched, since it is not called Masters");
    masters.close();
}

void Examination::checkIdle() {
    Kind idle(*this, MoDiffFinding::eAdvice,
              "look at names and endings; charts and properties need a table [[tvd]] or [[prp]] in modiff.toml");
    for (auto const& [directory, number] : m_found.idle)
        if (!isMisspelt(directory))
            idle.add(counted(number, "file") + " in " + directory + " belong" + (number == 1 ? "s" : "") +
                     " to no format");
    idle.close();
}

void Examination::checkMasters() {
    Kind unreadable(*this, MoDiffFinding::eTrouble, "let the user who runs modiff read it, or remove it");
    for (MoDiffPair const& pair : m_plan.pairs) {
        std::string const obstacle = obstacleTo(pair.master);
        if (!obstacle.empty())
            unreadable.add("the master " + pair.master + " cannot be read: " + obstacle);
    }
    unreadable.close();
}

void Examination::checkOutputDirectories() {
    std::map<std::string, std::size_t> masters; // by output directory
    for (MoDiffPair const& pair : m_plan.pairs)
        ++masters[directoryOf(pair.actual)];
    Kind missing(*this, MoDiffFinding::eTrouble, "have the reports rendered, or correct working-directory");
    for (auto const& [directory, number] : masters)
        if (!isThere(directory))
            missing.add("the output directory " + directory + " is not there, so " + counted(number, "actual file") +
                        (number == 1 ? " is" : " are") + " missing");
    missing.close();
}

void Examination::checkCase() {
    MoDiffCaseTwins twins;
    Kind differing(*this, MoDiffFinding::eTrouble, "give master and actual file the same name");
    for (MoDiffPair const& pair : m_plan.pairs) {
        std::string const twin = isThere(pair.actual) ? "" : twins.find(pair.actual);
        if (!twin.empty())
            differing.add("the master " + pair.master + " differs from the actual file " + twin + " in case");
    }
    differing.close();
}

void Examination::checkShared() {
    std::map<std::string, std::vector<std::string>> masters; // by actual file
    for (MoDiffPair const& pair : m_plan.pairs)
        if (!pair.warnings.empty())
            masters[pair.actual].push_back(pair.master);
    Kind shared(*this, MoDiffFinding::eAdvice, "rename reports, so that none writes over another one's output");
    for (auto const& [actual, names] : masters)
        shared.add(counted(names.size(), "master") + " share the actual file " + actual + ": " + names[0] + ", " +
                   names[1] + (names.size() > 2 ? ", ..." : ""));
    shared.close();
}

void Examination::checkRules() {
    Kind idle(*this, MoDiffFinding::eTrouble, "correct or remove the rule");
    for (std::string const& sentence : MoDiffIdleRules::find(m_found, m_plan))
        idle.add(sentence);
    idle.close();
    try {
        MoDiffExpectations const expectations(m_configuration, m_plan);
    } catch (MoDiffConfigurationError const& error) {
        m_findings.push_back({MoDiffFinding::eTrouble, "tree", error.what(), "correct or remove the rule"});
    }
}

} // namespace

std::vector<MoDiffFinding> MoDiffTreeCheck::examine(MoDiffSuiteConfiguration const& configuration) {
    return Examination(configuration).run();
}
