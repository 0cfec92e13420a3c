#ifndef MO_DIFF_RECORD_READER_H
#define MO_DIFF_RECORD_READER_H

#include "MoDiffRecord.h"

#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

/// Reads a record from its beginning to its end, one pair at a time, so that its size does not matter. A record whose
/// writer was killed is read as far as it goes and tells that it is incomplete; a piece of a line at its end is left
/// out. Errors raise MoDiffRecordError.
///
///     MoDiffRecordReader reader("modiff-run");
///     for (MoDiffPairResult result; reader.next(result);)
///         ...
///     if (!reader.isComplete())
///         ...
class MoDiffRecordReader {
public:
    /// @param path the directory of a run, or the record itself
    explicit MoDiffRecordReader(std::string const& path);

    /// The record's file.
    std::string const& getFileName() const { return m_fileName; }
    MoDiffRecordHeader const& getHeader() const { return m_header; }

    /// Gives the next pair, in the order of finishing; false at the end.
    bool next(MoDiffPairResult& result);
    /// Where the line of the pair that next() gave begins and ends in the file, line feed included.
    std::uint64_t getLineBegin() const { return m_lineBegin; }
    std::uint64_t getLineEnd() const { return m_lineEnd; }

    /// That line itself, without its line feed; valid until the next call.
    std::string_view getLine() const { return m_line; }

    // What follows is known when next() has returned false.

    /// Whether the run went to its end and every pair of it is there.
    bool isComplete() const { return m_end.complete; }
    /// A sentence that says what an incomplete record lacks, or what its run could not read; "" when it has all.
    std::string describeIncomplete() const;
    std::vector<std::string> const& getNewFiles() const { return m_newFiles; }
    /// Counted from the pairs that were read.
    MoDiffTotals const& getTotals() const { return m_totals; }
    /// As the last line tells; all zero without one.
    MoDiffRecordEnd const& getEnd() const { return m_end; }

private:
    bool readLine();
    MoDiffRecord::Line parseLine() const;
    void take(MoDiffRecord::Line&& line);
    [[noreturn]] void fail(std::string const& what) const;

    std::string m_fileName;
    std::ifstream m_file;
    std::string m_line;
    std::uint64_t m_lineNumber = 0;
    std::uint64_t m_lineBegin = 0;
    std::uint64_t m_lineEnd = 0;
    MoDiffRecordHeader m_header;
    std::vector<std::string> m_newFiles;
    MoDiffTotals m_totals;
    MoDiffRecordEnd m_end;
};

#endif
