#include "MoDiffRecordPairs.h"

#include "MoDiffContentHash.h"
#include "MoDiffPathGlob.h"
#include "MoDiffRecordReader.h"
#include "MoDiffRecordText.h"
#include "MoDiffSelection.h"
#include "MoDiffShownText.h"

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>

namespace fs = std::filesystem;

namespace {

std::string workingDirectoryOf(MoDiffRecordHeader const& header) {
    nlohmann::json const config = nlohmann::json::parse(header.config);
    auto const value = config.find("working-directory");
    return value != config.end() && value->is_string()
               ? MoDiffRecordText::bytesOf(value->get_ref<std::string const&>())
               : "";
}

bool isBefore(MoDiffPairResult const& left, MoDiffPairResult const& right) {
    return left.id < right.id;
}

/// The indexes of the pairs that a name means which is no id.
std::set<std::size_t> meant(MoDiffRecordPairs::Pairs const& pairs, std::string const& name,
                            MoDiffRecordPairs::Filter const& filter) {
    MoDiffPathGlob const glob(name);
    std::set<std::size_t> found;
    MoDiffPairResult const* met = nullptr;
    for (std::size_t index = 0; index < pairs.size(); ++index) {
        std::string const& id = pairs[index].id;
        std::string const shown = MoDiffShownText::escaped(id);
        if (shown == name)
            return {index};
        if (id.find(name) == std::string::npos && shown.find(name) == std::string::npos && !glob.matches(id))
            continue;
        met = met ? met : &pairs[index];
        if (filter(pairs[index]))
            found.insert(index);
    }
    if (found.empty())
        throw MoDiffSelectionError(name + " meets no pair of the record" +
                                   (met ? " that this can be done with; " + met->id + " is " + wordOf(met->outcome) +
                                              ", and means itself by its whole id only"
                                        : ""));
    return found;
}

bool isAsRecorded(std::string const& path, std::string const& hash) {
    auto const now = MoDiffContentHash::ofFile(path);
    return now && now->digits == hash;
}

} // namespace

MoDiffRecordPairs::MoDiffRecordPairs(std::string const& directory) : m_directory(directory) {
    MoDiffRecordReader reader(directory);
    for (MoDiffPairResult pair; reader.next(pair);)
        m_pairs.push_back(std::move(pair));
    std::sort(m_pairs.begin(), m_pairs.end(), isBefore);
    m_newFiles = reader.getNewFiles();
    m_newFilesFail = reader.getHeader().newFails && reader.getHeader().shardCount == 1 && !m_newFiles.empty();
    m_incomplete = reader.describeIncomplete();
    m_header = reader.getHeader();
    m_end = reader.getEnd();
    m_workingDirectory = workingDirectoryOf(m_header);
    if (auto const file = MoDiffContentHash::ofFile(reader.getFileName()))
        m_hash = file->digits;
    std::error_code ignored;
    if (!fs::is_directory(m_directory, ignored))
        m_directory = fs::path(reader.getFileName()).parent_path().string();
}

MoDiffPairResult const* MoDiffRecordPairs::find(std::string const& id) const {
    MoDiffPairResult wanted;
    wanted.id = id;
    auto const found = std::lower_bound(m_pairs.begin(), m_pairs.end(), wanted, isBefore);
    return found != m_pairs.end() && found->id == id ? &*found : nullptr;
}

std::vector<MoDiffPairResult const*> MoDiffRecordPairs::choose(std::vector<std::string> const& names,
                                                               Filter const& filter) const {
    std::set<std::size_t> indexes;
    for (std::string const& name : names) {
        if (MoDiffPairResult const* const pair = find(name))
            indexes.insert(static_cast<std::size_t>(pair - m_pairs.data()));
        else
            indexes.merge(meant(m_pairs, name, filter));
    }
    std::vector<MoDiffPairResult const*> chosen;
    chosen.reserve(indexes.size());
    for (std::size_t const index : indexes)
        chosen.push_back(&m_pairs[index]);
    return chosen;
}

bool MoDiffRecordPairs::isDealtWith(MoDiffPairResult const& pair) {
    std::error_code error;
    if (pair.hash.actual.empty())
        return pair.hash.master.empty() ? false : !fs::exists(pair.master, error) && !fs::exists(pair.actual, error);
    if (pair.hash.actual == pair.hash.master || !pair.bytes)
        return false;
    if (fs::file_size(pair.master, error) != pair.bytes->actual || error)
        return false;
    return isAsRecorded(pair.master, pair.hash.actual);
}

bool MoDiffRecordPairs::isUnchanged(MoDiffPairResult const& pair) {
    return isAsRecorded(pair.master, pair.hash.master) && isAsRecorded(pair.actual, pair.hash.actual);
}
