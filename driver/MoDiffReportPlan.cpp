#include "MoDiffReportPlan.h"

#include "KLTFmDir.h"
#include "MoDiffFileEngine.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <list>
#include <memory>
#include <system_error>

namespace {

/// Why a directory cannot be searched; "" when it can, or isn't there.
std::string obstacleTo(std::string const& directory) {
    std::unique_ptr<DIR, int (*)(DIR*)> const opened(opendir(directory.c_str()), closedir);
    if (opened || errno == ENOENT)
        return "";
    return "cannot search " + directory + ": " + std::generic_category().message(errno);
}

std::string directoryOf(std::string const& path) {
    std::string directory;
    KLTFmDir::splitPath(path.c_str(), &directory, nullptr);
    return directory;
}

std::string fileOf(std::string const& path) {
    std::string file;
    KLTFmDir::splitPath(path.c_str(), nullptr, &file);
    return file;
}

/// The master whose name is the report's own: what the glob gives when nothing stands in place of its star.
std::string ownMaster(std::string const& glob, std::string const& report) {
    std::string file = fileOf(glob);
    return file.erase(std::min(report.size(), file.size() - 1), 1);
}

} // namespace

MoDiffReportPlan::MoDiffReportPlan(MoDiffFormatRow const& format, MoDiffEngineSettings const& settings,
                                   std::vector<std::string> const& reports) {
    m_plan.setups.push_back({&format, settings});
    std::unique_ptr<MoDiffFileEngine> const engine = format.makeEngine(m_plan.setups.front().settings);
    m_outputDirectory = engine->getOutputDirectory();
    for (std::string const& report : reports)
        add(*engine, report);
    m_plan.warnOfSharedActuals();
}

void MoDiffReportPlan::add(MoDiffFileEngine const& engine, std::string const& report) {
    Report& added = m_reports.emplace_back();
    added.name = report;
    std::string const name = engine.getReportName(report);
    if (name.empty()) {
        added.trouble = "the path names no report";
        return;
    }
    added.glob = engine.getMasterFileGlobExpression(report);
    added.trouble = obstacleTo(directoryOf(added.glob));
    std::list<std::string> masters;
    engine.globFiles(added.glob.c_str(), masters);
    for (std::string const& master : masters)
        added.pairs.push_back(addPair(engine, master));
    added.isOnlyLonger =
        !masters.empty() && std::none_of(masters.begin(), masters.end(), [&](std::string const& master) {
            return fileOf(master) == ownMaster(added.glob, name);
        });
}

std::size_t MoDiffReportPlan::addPair(MoDiffFileEngine const& engine, std::string const& master) {
    MoDiffEngineSetup const& setup = m_plan.setups.front();
    std::string const id = MoDiffPlan::idOf(*setup.format, master);
    auto const [place, isNew] = m_indexes.emplace(id, m_plan.pairs.size());
    if (isNew) {
        m_plan.selected.push_back(m_plan.pairs.size());
        m_plan.pairs.push_back({id, &setup, master, engine.getActualFile(master), {}});
    }
    return place->second;
}
