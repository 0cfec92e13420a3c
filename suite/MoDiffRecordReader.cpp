#include "MoDiffRecordReader.h"

#include <filesystem>
#include <utility>

MoDiffRecordReader::MoDiffRecordReader(std::string const& path) : m_fileName(path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        m_fileName = (std::filesystem::path(path) / MoDiffRecord::kFileName).string();
    if (std::filesystem::is_regular_file(m_fileName, ignored))
        m_file.open(m_fileName, std::ios::binary);
    if (!m_file.is_open())
        throw MoDiffRecordError(m_fileName + ": there is no record that can be read");
    if (!readLine())
        throw MoDiffRecordError(m_fileName + ": the record is empty");
    MoDiffRecord::Line const line = parseLine();
    if (line.kind != MoDiffRecord::eHeader)
        fail("a record begins with another line");
    m_header = line.header;
}

bool MoDiffRecordReader::next(MoDiffPairResult& result) {
    while (readLine()) {
        MoDiffRecord::Line line = parseLine();
        if (line.kind == MoDiffRecord::ePair) {
            m_totals.add(line.pair.outcome);
            result = std::move(line.pair);
            return true;
        }
        take(std::move(line));
    }
    m_end.complete = m_end.complete && m_totals.getAll() == m_header.pairs;
    return false;
}

std::string MoDiffRecordReader::describeIncomplete() const {
    if (isComplete() && m_header.unreadable.empty())
        return "";
    if (isComplete())
        return m_fileName + ": masters may have been overlooked: " + m_header.unreadable.front();
    std::string text = m_fileName + ": the record is incomplete, it holds " + std::to_string(m_totals.getAll()) +
                       " of " + std::to_string(m_header.pairs) + " pairs";
    if (!m_end.stopped.empty())
        text += "; the run was stopped by " + m_end.stopped;
    return text;
}

/// Reads a whole line; a piece at the end counts as none, since its writer was killed.
bool MoDiffRecordReader::readLine() {
    std::getline(m_file, m_line);
    if (m_file.bad())
        throw MoDiffRecordError(m_fileName + ": cannot be read to its end");
    if (m_file.eof())
        return false;
    ++m_lineNumber;
    m_lineBegin = m_lineEnd;
    m_lineEnd += m_line.size() + 1;
    return true;
}

MoDiffRecord::Line MoDiffRecordReader::parseLine() const {
    try {
        return MoDiffRecord::parse(m_line);
    } catch (std::exception const& error) {
        fail(error.what());
    }
}

void MoDiffRecordReader::take(MoDiffRecord::Line&& line) {
    if (line.kind == MoDiffRecord::eHeader)
        fail("a second first line");
    if (line.kind == MoDiffRecord::eNewFiles)
        m_newFiles = std::move(line.newFiles);
    else
        m_end = std::move(line.end);
}

void MoDiffRecordReader::fail(std::string const& what) const {
    throw MoDiffRecordError(m_fileName + ":" + std::to_string(m_lineNumber) + ": " + what);
}
