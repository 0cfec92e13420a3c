// The file and memory checks of QPTTestHarness.
#include "QPTTestHarness.h"

#include "MoFileHandle.h"
#include "QPTOutputLock.h"
#include "QPTTestTimer.h"

#include <cstdio>
#include <cstring>
#include <optional>
#include <ostream>
#include <sys/types.h>

namespace {

char const kFileKind[] = "Check File: ";
char const kMemoryKind[] = "Check Memory: ";

std::string textOf(char const* name) {
    return name ? name : "";
}

std::string failureLine(int warn, char const* kind, char const* name) {
    return (warn ? ">>  WARNED: " : ">>  FAILED: ") + std::string(kind) + textOf(name);
}

/// Compares two files and keeps what a dump of their first difference needs. Files close with this object.
class FileComparison {
public:
    static unsigned long const kDumpLength = 128;

    FileComparison(char const* actualFile, char const* expectedFile);

    bool isEqual() const { return m_isEqual; }
    /// Reads both files from the first difference on, up to 128 bytes.
    void readDifference();

    /// Why there is nothing to dump, with its line end; null when there is.
    char const* getMessage() const { return m_message; }
    unsigned char const* getActual() const { return m_actual.bytes; }
    unsigned char const* getExpected() const { return m_expected.bytes; }
    unsigned long getLength() const { return m_expected.length; }
    unsigned long long getPosition() const { return static_cast<unsigned long long>(m_position); }

private:
    struct Side {
        std::optional<MoFileHandle> file;
        unsigned char bytes[kDumpLength] = {};
        unsigned long length = kDumpLength;

        bool open(char const* name) { return file.emplace(name, "rb") != nullptr; }
        bool isOpen() const { return file && *file; }
        bool readFrom(off_t position);
    };

    void compare();

    char const* m_message = nullptr;
    Side m_expected;
    Side m_actual;
    off_t m_position = 0; // of the first difference
    bool m_isEqual = false;
};

FileComparison::FileComparison(char const* actualFile, char const* expectedFile) {
    if (!expectedFile)
        m_message = "Invalid expected file name\n";
    if (!actualFile)
        m_message = "Invalid actual file name\n";
    if (m_message)
        return;
    if (!m_expected.open(expectedFile))
        m_message = "Unable to open expected file\n";
    if (!m_actual.open(actualFile))
        m_message = "Unable to open actual file\n";
    if (!m_message)
        compare();
}

void FileComparison::compare() {
    FILE* const actual = *m_actual.file;
    FILE* const expected = *m_expected.file;
    for (;; ++m_position) {
        // Nobody else knows these streams. Single bytes, so that what a pipe has not yet sent is not waited for.
        int const actualByte = getc_unlocked(actual);
        int const expectedByte = getc_unlocked(expected);
        if (actualByte == expectedByte && actualByte != EOF)
            continue;
        m_isEqual = actualByte == expectedByte && !std::ferror(actual) && !std::ferror(expected);
        return;
    }
}

void FileComparison::readDifference() {
    if (m_expected.isOpen() && !m_expected.readFrom(m_position) && !m_message)
        m_message = "Bad seek on expected file!\n";
    if (m_actual.isOpen() && !m_actual.readFrom(m_position) && !m_message)
        m_message = "Bad seek on actual file!\n";
}

bool FileComparison::Side::readFrom(off_t position) {
    if (fseeko(*file, position, SEEK_SET) != 0)
        return false;
    length = static_cast<unsigned long>(std::fread(bytes, 1, sizeof bytes, *file));
    return true;
}

bool equalStrings(char const* a, char const* b) {
    return a && b && std::strcmp(a, b) == 0;
}

char const* asChars(void const* text) {
    return static_cast<char const*>(text);
}

} // namespace

int QPTTestHarness::checkNamedFile(char const* name, char const* actualFile, char const* expectedFile, int warn) {
    QPTTestTimer const timer;
    char const* const errorText =
        warn ? "check_file_warn() called outside test script" : "check_file() called outside test script";
    FileComparison files(actualFile, expectedFile);
    if (files.isEqual())
        return recordPass(kFileKind, name, errorText);
    if (!countDifference(warn, errorText))
        return 0;
    QPTOutputLock const lock(*this);
    files.readDifference();
    writeLine(failureLine(warn, kFileKind, name), eLogMinimal);
    if (m_logLevel <= eLogConcise)
        return 0;
    if (files.getMessage())
        writeLog(files.getMessage(), eLogMinimal, 1);
    else
        dumpRows(files.getActual(), files.getExpected(), files.getLength(), files.getPosition());
    writeLog("\n", eLogNormal, 0);
    return 0;
}

int QPTTestHarness::checkNamedFileWarn(char const* name, char const* actualFile, char const* expectedFile) {
    return checkNamedFile(name, actualFile, expectedFile, 1);
}

int QPTTestHarness::checkNamedMemory(char const* name, void const* actual, void const* expected, unsigned long length,
                                     int warn) {
    QPTTestTimer const timer;
    char const* const errorText =
        warn ? "checkMemoryWarn() called outside test script" : "checkMemory)() called outside test script";
    if (compareBuffer(actual, expected, length))
        return recordPass(kMemoryKind, name, errorText);
    if (!countDifference(warn, errorText))
        return 0;
    QPTOutputLock const lock(*this);
    writeLine(failureLine(warn, kMemoryKind, name), eLogMinimal);
    dumpBuffer(static_cast<unsigned char const*>(actual), static_cast<unsigned char const*>(expected), length, 0);
    return 0;
}

int QPTTestHarness::checkNamedMemoryWarn(char const* name, void const* actual, void const* expected,
                                         unsigned long length) {
    return checkNamedMemory(name, actual, expected, length, 1);
}

int QPTTestHarness::compareBuffer(void const* a, void const* b, unsigned long length) {
    return a && b && std::memcmp(a, b, length) == 0 ? 1 : 0;
}

int QPTTestHarness::recordPass(char const* kind, char const* name, char const* errorText) {
    if (!logCheckPass()) {
        logScriptError(errorText);
        return 0;
    }
    QPTOutputLock const lock(*this);
    writeLine("PASSED: " + std::string(kind) + textOf(name), eLogConcise);
    return 1;
}

int QPTTestHarness::countDifference(int warn, char const* errorText) {
    if (warn ? logCheckWarn() : logCheckFail())
        return 1;
    logScriptError(errorText);
    return 0;
}

bool QPTCompareEqual(char const* a, char const* b) {
    return equalStrings(a, b);
}

bool QPTCompareEqual(char* a, char* b) {
    return equalStrings(a, b);
}

bool QPTCompareEqual(signed char* a, signed char* b) {
    return equalStrings(asChars(a), asChars(b));
}

bool QPTCompareEqual(unsigned char* a, unsigned char* b) {
    return equalStrings(asChars(a), asChars(b));
}

bool QPTCompareEqual(std::nullptr_t, std::nullptr_t) {
    return false;
}

void QPTOutputValue(char const* value) {
    QPTTestHarness::instance()->logOstream() << (value ? value : "(null)");
}

void QPTOutputValue(char* value) {
    QPTOutputValue(asChars(value));
}

void QPTOutputValue(signed char* value) {
    QPTOutputValue(asChars(value));
}

void QPTOutputValue(unsigned char* value) {
    QPTOutputValue(asChars(value));
}

void QPTOutputValue(std::nullptr_t) {
    QPTOutputValue(asChars(nullptr));
}
