#ifndef MO_DIFF_RECORD_WRITER_H
#define MO_DIFF_RECORD_WRITER_H

#include "MoDiffDescriptor.h"
#include "MoDiffRecord.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

/// Writes the record of a run. Lines are gathered and written in blocks of whole ones, at least once a second as long
/// as lines come or flush() is called; the rest is written at the latest by the destructor. One writer at a time has
/// a record: a second one is refused. Errors raise std::system_error or MoDiffRecordError; what was written before
/// stays whole.
class MoDiffRecordWriter {
public:
    /// Takes the record in a directory, which is made when it is not there. An existing record stays as it is until
    /// start() or resume(); a file of the record's name that is no record is refused.
    explicit MoDiffRecordWriter(std::string const& directory);
    ~MoDiffRecordWriter();
    MoDiffRecordWriter(MoDiffRecordWriter const&) = delete;
    MoDiffRecordWriter& operator=(MoDiffRecordWriter const&) = delete;

    /// Replaces whatever the record held by a new first line.
    void start(MoDiffRecordHeader const& header);

    /// Goes on with an incomplete record of the same plan, selection and shard; what stands behind its pairs is
    /// dropped. Raises MoDiffRecordError, the record untouched, when it is complete or of another plan.
    /// @param take gets each pair that the record holds
    void resume(MoDiffRecordHeader const& header, std::function<void(MoDiffPairResult&&)> const& take);

    /// Begins a record beside the one that is there, which stays as it is until finish(). Without that, it stays for
    /// good.
    void startBeside(MoDiffRecordHeader const& header);

    /// Takes up whole lines.
    void add(std::string_view lines);
    /// Writes what was gathered when a second has passed since the last time.
    void flushIfDue();
    void flush();
    /// Writes the rest, and puts a record that was begun beside another one in its place.
    void finish();

    std::string const& getFileName() const { return m_fileName; }

private:
    [[noreturn]] void giveUp(std::size_t written);
    void truncate(std::uint64_t length);

    std::string m_fileName;
    std::string m_besideName; ///< of the record that is to take the place of another one; "" for none
    MoDiffDescriptor m_lock;  ///< the record that is there
    MoDiffDescriptor m_descriptor;
    std::uint64_t m_length = 0; ///< of the whole lines in the file
    std::string m_lines;        ///< not written yet
    std::chrono::steady_clock::time_point m_lastFlush;
};

#endif
