#include "MoDiffRecordWriter.h"

#include "MoDiffRecordReader.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <utility>

namespace {

std::size_t const kBlock = 1 << 15;
std::chrono::seconds const kInterval{1};
int const kLockAttempts = 50;
std::chrono::milliseconds const kLockInterval{20};
char const kBeginning[] = "{\"modiff\":";

[[noreturn]] void failToWrite(std::string const& fileName) {
    throw std::system_error(errno, std::generic_category(), "cannot write " + fileName);
}

/// Whether a file is empty or begins as records do, so that it may be replaced.
bool isReplaceable(int descriptor) {
    char beginning[sizeof kBeginning - 1];
    ssize_t const count = pread(descriptor, beginning, sizeof beginning, 0);
    return count == 0 || (count > 0 && std::string_view(beginning, static_cast<std::size_t>(count)) == kBeginning);
}

/// Waits a little for a lock: the workers of a run that was killed hold it until they have ended, too.
bool lock(int descriptor) {
    for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
        if (flock(descriptor, LOCK_EX | LOCK_NB) == 0)
            return true;
        std::this_thread::sleep_for(kLockInterval);
    }
    return false;
}

bool hasName(int descriptor, std::string const& fileName) {
    struct stat own;
    struct stat named;
    return fstat(descriptor, &own) == 0 && stat(fileName.c_str(), &named) == 0 && own.st_dev == named.st_dev &&
           own.st_ino == named.st_ino;
}

/// Where a record differs from what a run would write; "" when the run may go on with it.
std::string describeMismatch(MoDiffRecordHeader const& there, MoDiffRecordHeader const& wanted) {
    if (there.digest != wanted.digest)
        return "the record is of another plan: masters or settings have changed since";
    if (there.shardIndex != wanted.shardIndex || there.shardCount != wanted.shardCount)
        return "the record is of another shard";
    if (there.selection != wanted.selection || there.chosenDigest != wanted.chosenDigest ||
        there.pairs != wanted.pairs)
        return "the record is of another selection";
    return "";
}

} // namespace

MoDiffRecordWriter::MoDiffRecordWriter(std::string const& directory) {
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error)
        throw std::system_error(error, "cannot make the directory " + directory);
    m_fileName = (std::filesystem::path(directory) / MoDiffRecord::kFileName).string();
    struct stat status;
    if (stat(m_fileName.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        throw MoDiffRecordError(m_fileName + ": no regular file, so no record can take its place");
    do { // until what is locked is what has the name: another run may have replaced it meanwhile
        m_descriptor = MoDiffDescriptor(open(m_fileName.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
        if (!m_descriptor)
            failToWrite(m_fileName);
        if (!lock(m_descriptor.get()))
            throw MoDiffRecordError(m_fileName + ": another run writes this record");
    } while (!hasName(m_descriptor.get(), m_fileName));
    if (!isReplaceable(m_descriptor.get()))
        throw MoDiffRecordError(m_fileName + ": no record, so it is not replaced");
}

MoDiffRecordWriter::~MoDiffRecordWriter() {
    try {
        flush();
    } catch (std::exception const&) { // whoever must know calls flush()
    }
    if (!m_besideName.empty())
        unlink(m_besideName.c_str());
}

void MoDiffRecordWriter::start(MoDiffRecordHeader const& header) {
    m_lines.clear();
    truncate(0);
    add(MoDiffRecord::headerLine(header));
    flush();
}

void MoDiffRecordWriter::startBeside(MoDiffRecordHeader const& header) {
    struct stat status;
    std::string name = m_fileName + ".XXXXXX";
    MoDiffDescriptor beside(mkostemp(name.data(), O_CLOEXEC));
    if (!beside || fstat(m_descriptor.get(), &status) != 0)
        failToWrite(m_fileName);
    m_besideName = name;
    if (fchmod(beside.get(), status.st_mode & 07777) != 0)
        failToWrite(m_fileName);
    m_lock = std::move(m_descriptor);
    m_descriptor = std::move(beside);
    start(header);
}

void MoDiffRecordWriter::finish() {
    flush();
    if (m_besideName.empty())
        return;
    if (rename(m_besideName.c_str(), m_fileName.c_str()) != 0)
        failToWrite(m_fileName);
    m_besideName.clear();
}

void MoDiffRecordWriter::resume(MoDiffRecordHeader const& header,
                                std::function<void(MoDiffPairResult&&)> const& take) {
    MoDiffRecordReader reader(m_fileName);
    // JSON objects are compared in the reader's way of writing them.
    std::string const mismatch =
        describeMismatch(reader.getHeader(), MoDiffRecord::parse(MoDiffRecord::headerLine(header)).header);
    if (!mismatch.empty())
        throw MoDiffRecordError(m_fileName + ": " + mismatch);
    std::uint64_t end = reader.getLineEnd();
    for (MoDiffPairResult result; reader.next(result); take(std::move(result)))
        end = reader.getLineEnd();
    if (reader.isComplete())
        throw MoDiffRecordError(m_fileName + ": the record is complete, there is nothing to resume");
    truncate(end);
}

void MoDiffRecordWriter::add(std::string_view lines) {
    m_lines += lines;
    if (m_lines.size() >= kBlock)
        flush();
}

void MoDiffRecordWriter::flushIfDue() {
    if (std::chrono::steady_clock::now() - m_lastFlush >= kInterval)
        flush();
}

void MoDiffRecordWriter::flush() {
    m_lastFlush = std::chrono::steady_clock::now();
    std::size_t written = 0;
    while (written < m_lines.size()) {
        ssize_t const count = pwrite(m_descriptor.get(), m_lines.data() + written, m_lines.size() - written,
                                     static_cast<off_t>(m_length + written));
        if (count < 0 && errno != EINTR)
            giveUp(written);
        written += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    m_length += written;
    m_lines.clear();
}

/// Leaves the whole lines among the bytes that could be written, and raises the error.
void MoDiffRecordWriter::giveUp(std::size_t written) {
    int const reason = errno;
    std::size_t const whole = std::string_view(m_lines).substr(0, written).rfind('\n') + 1; // none: npos + 1 is 0
    m_lines.clear();
    truncate(m_length + whole);
    errno = reason;
    failToWrite(m_fileName);
}

void MoDiffRecordWriter::truncate(std::uint64_t length) {
    if (ftruncate(m_descriptor.get(), static_cast<off_t>(length)) != 0)
        failToWrite(m_fileName);
    m_length = length;
}
