#include "MoDiffRecordMerge.h"

#include "MoDiffPlan.h"
#include "MoDiffRecordReader.h"
#include "MoDiffRecordWriter.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string_view>

namespace fs = std::filesystem;

namespace {

/// Where the line of a pair stands.
struct Place {
    std::string id;
    std::size_t source;
    std::uint64_t begin;
    std::uint64_t end;
};

class Merge {
public:
    Merge(std::vector<std::string> const& directories, std::string const& outDirectory, MoDiffRunEvents& events)
        : m_directories(directories), m_outDirectory(outDirectory), m_events(events) {}

    MoDiffRecordMerge::Report perform();

private:
    void readAll();
    void read(std::size_t source);
    void takeHeader(MoDiffRecordReader const& reader);
    void takeNewFiles(std::vector<std::string> files, bool isFirst);
    void checkPairs();
    void write();
    [[noreturn]] static void fail(std::string const& file, std::string const& what) {
        throw MoDiffRecordError(file + ": " + what);
    }

    std::vector<std::string> const& m_directories;
    std::string const& m_outDirectory;
    MoDiffRunEvents& m_events;
    std::vector<std::string> m_files;       ///< the records
    std::vector<std::string> m_fileOfShard; ///< by index from 0; "" while a shard is missing
    std::vector<Place> m_places;
    std::set<std::string> m_unreadable; ///< by any shard
    double m_seconds = 0;
    MoDiffRecordMerge::Report m_report;
};

MoDiffRecordMerge::Report Merge::perform() {
    readAll();
    checkPairs();
    write();
    bool const newFails = m_report.header.newFails && !m_report.newFiles.empty();
    m_report.exitStatus = m_report.totals.getExitStatus(newFails, !m_report.header.unreadable.empty());
    return m_report;
}

void Merge::readAll() {
    if (m_directories.empty())
        throw MoDiffRecordError("there is no record to be joined");
    for (std::size_t source = 0; source < m_directories.size(); ++source)
        read(source);
    for (std::size_t shard = 0; shard < m_fileOfShard.size(); ++shard)
        if (m_fileOfShard[shard].empty())
            throw MoDiffRecordError("shard " + std::to_string(shard + 1) + " of " +
                                    std::to_string(m_fileOfShard.size()) + " is missing");
    m_report.header.unreadable.assign(m_unreadable.begin(), m_unreadable.end());
}

void Merge::read(std::size_t source) {
    MoDiffRecordReader reader(m_directories[source]);
    m_files.push_back(reader.getFileName());
    takeHeader(reader);
    for (MoDiffPairResult pair; reader.next(pair);) {
        m_report.totals.add(pair.outcome);
        m_places.push_back({pair.id, source, reader.getLineBegin(), reader.getLineEnd()});
    }
    if (!reader.isComplete())
        throw MoDiffRecordError(reader.describeIncomplete());
    if (!(reader.getEnd().totals == reader.getTotals()))
        fail(reader.getFileName(), "its counts do not fit its pairs");
    m_seconds += reader.getEnd().seconds;
    takeNewFiles(reader.getNewFiles(), source == 0);
}

void Merge::takeHeader(MoDiffRecordReader const& reader) {
    MoDiffRecordHeader const& header = reader.getHeader();
    std::string const& file = reader.getFileName();
    MoDiffRecordHeader& joined = m_report.header;
    if (m_fileOfShard.empty()) {
        joined = header;
        joined.pairs = 0;
        joined.unreadable.clear();
        m_fileOfShard.resize(header.shardCount);
    }
    std::string const& first = m_files.front();
    if (header.digest != joined.digest)
        fail(file, "of another plan than " + first);
    if (header.selection != joined.selection || header.chosenDigest != joined.chosenDigest)
        fail(file, "of another selection than " + first);
    if (header.shardCount != m_fileOfShard.size() || header.shardIndex == 0 || header.shardIndex > header.shardCount)
        fail(file, "shard " + std::to_string(header.shardIndex) + " of " + std::to_string(header.shardCount) +
                       ", but " + first + " is one of " + std::to_string(m_fileOfShard.size()));
    std::string& fileOfShard = m_fileOfShard[header.shardIndex - 1];
    if (!fileOfShard.empty())
        fail(file, "shard " + std::to_string(header.shardIndex) + ", as is " + fileOfShard);
    fileOfShard = file;
    joined.pairs += header.pairs;
    m_unreadable.insert(header.unreadable.begin(), header.unreadable.end());
}

/// What one shard does not call new is not new: its actual file or its master came in between.
void Merge::takeNewFiles(std::vector<std::string> files, bool isFirst) {
    std::sort(files.begin(), files.end());
    if (isFirst) {
        m_report.newFiles = std::move(files);
        return;
    }
    std::vector<std::string> common;
    std::set_intersection(m_report.newFiles.begin(), m_report.newFiles.end(), files.begin(), files.end(),
                          std::back_inserter(common));
    m_report.newFiles = std::move(common);
}

void Merge::checkPairs() {
    std::sort(m_places.begin(), m_places.end(),
              [](Place const& left, Place const& right) { return left.id < right.id; });
    auto const twice = std::adjacent_find(m_places.begin(), m_places.end(),
                                          [](Place const& left, Place const& right) { return left.id == right.id; });
    if (twice != m_places.end())
        fail(m_files[std::next(twice)->source],
             "the pair " + twice->id + " is there twice, also in " + m_files[twice->source]);
    std::vector<std::string_view> ids;
    for (Place const& place : m_places)
        ids.emplace_back(place.id);
    if (MoDiffPlan::digestOf(ids) != m_report.header.chosenDigest)
        fail(m_files.front(), "with the other shards, its pairs are not those that the run chose: the shards were "
                              "split in different ways, or a record was changed");
    for (std::string const& directory : m_directories) {
        std::error_code ignored;
        if (fs::equivalent(directory, m_outDirectory, ignored))
            fail(directory, "to be joined, and to be overwritten by the result");
    }
}

void Merge::write() {
    MoDiffRecordWriter writer(m_outDirectory);
    m_report.header.shardIndex = m_report.header.shardCount = 1;
    writer.start(m_report.header);
    std::vector<std::ifstream> sources;
    for (std::string const& file : m_files)
        sources.emplace_back(file, std::ios::binary);
    m_events.started(m_places.size());
    for (Place const& place : m_places) {
        std::string line(static_cast<std::size_t>(place.end - place.begin), '\0');
        std::ifstream& source = sources[place.source];
        if (!source.seekg(static_cast<std::streamoff>(place.begin)) ||
            !source.read(line.data(), static_cast<std::streamsize>(line.size())))
            fail(m_files[place.source], "cannot be read any more");
        writer.add(line);
        m_events.finished(MoDiffRecord::parse(line).pair);
    }
    MoDiffRecordEnd end;
    end.complete = true;
    end.totals = m_report.totals;
    end.seconds = m_seconds;
    writer.add(MoDiffRecord::newFilesLine(m_report.newFiles));
    writer.add(MoDiffRecord::endLine(end));
    writer.flush();
    m_report.recordFile = writer.getFileName();
}

} // namespace

MoDiffRecordMerge::Report MoDiffRecordMerge::merge(std::vector<std::string> const& directories,
                                                   std::string const& outDirectory, MoDiffRunEvents& events) {
    return Merge(directories, outDirectory, events).perform();
}
