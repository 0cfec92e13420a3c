#include "MoDiffIdleRules.h"

#include "MoDiffNearestWord.h"

#include <set>

namespace {

/// Masters, and all directories above them.
std::vector<std::string> pathsOf(MoDiffPlan const& plan) {
    std::set<std::string> paths;
    for (MoDiffPair const& pair : plan.pairs)
        for (std::size_t end = pair.master.size(); end != std::string::npos && end > 0;
             end = pair.master.rfind('/', end - 1))
            if (!paths.insert(pair.master.substr(0, end)).second)
                break; // so are those above it
    return {paths.begin(), paths.end()};
}

std::string lastStep(std::string const& path) {
    return path.substr(path.rfind('/') + 1);
}

/// "; did you mean WORD?", or "" when no other word is near.
std::string hintAt(std::string const& word, std::vector<std::string> const& words) {
    std::string const nearest = MoDiffNearestWord::find(word, words);
    return nearest.empty() || nearest == word ? "" : "; did you mean " + nearest + "?";
}

std::string describeExclude(MoDiffExclude const& rule, std::vector<std::string> const& paths) {
    std::size_t const end = rule.glob.find_last_not_of("/*") + 1;
    return rule.place + ": exclude " + rule.glob + " leaves nothing out" + hintAt(rule.glob.substr(0, end), paths);
}

std::string describeTable(MoDiffMasterPlace const& place, MoDiffDiscovery::Found const& found) {
    std::vector<std::string> folders;
    for (std::string const& directory : found.subDirectories)
        folders.push_back(lastStep(directory));
    std::string const where = place.folder.empty() ? "Masters" : "a folder " + place.folder + " of Masters";
    return place.origin + ": [[" + place.format->word + "]] meets no master: no file in " + where + " ends with " +
           place.ending + (place.folder.empty() ? "" : hintAt(lastStep(place.folder), folders));
}

} // namespace

std::vector<std::string> MoDiffIdleRules::find(MoDiffDiscovery::Found const& found, MoDiffPlan const& plan) {
    std::vector<std::string> sentences;
    if (found.masterFolders == 0)
        return sentences; // a wrong directory rather than wrong rules
    std::vector<std::string> const paths = found.idleExcludes.empty() ? std::vector<std::string>() : pathsOf(plan);
    for (MoDiffExclude const& rule : found.idleExcludes)
        if (plan.isWhole || rule.place.rfind("--", 0) == 0)
            sentences.push_back(describeExclude(rule, paths));
    if (plan.isWhole)
        for (MoDiffMasterPlace const& place : found.idleTables)
            sentences.push_back(describeTable(place, found));
    return sentences;
}
