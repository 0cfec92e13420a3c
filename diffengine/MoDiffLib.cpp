#include "MoDiffLib.h"

#include "KLTAssert.h"
#include "KLTOutOfMemoryError.h"
#include "KLTStdExceptionError.h"
#include "MoDiffCleansing.h"
#include "MoDiffComparisonObserver.h"
#include "MoDiffResultFailDiffNormalized.h"
#include "MoDiffResultFailFileMissing.h"
#include "MoDiffResultPass.h"
#include "MoFileHandle.h"
#include "MoInputFile.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <utility>

namespace {

char const kModule[] = "MoDiffLib";

using Text = MoDiffLib::Text;
using Patterns = MoDiffLib::Patterns;

/// Where seeking to the end leads; 0 for a stream that cannot seek. The position stays as it is.
off_t seekLength(FILE* fp) {
    off_t const position = ftello(fp);
    off_t const length = fseeko(fp, 0, SEEK_END) == 0 ? ftello(fp) : 0;
    fseeko(fp, position, SEEK_SET);
    return length;
}

long checkLength(off_t length) {
    KLT_ASSERT_NAMED(length < LONG_MAX, "File is small enough to be read whole");
    return static_cast<long>(std::max<off_t>(length, 0));
}

/// All zeros where the system tells nothing.
struct stat statusOf(FILE* file) {
    struct stat status = {};
    if (file)
        fstat(fileno(file), &status);
    return status;
}

/// The length of the whole file in bytes. A regular file is asked for it, since a stream reads where it seeks to.
long getFileLength(FILE* fp) {
    KLT_ASSERT_AT(kModule, 89, "KLT_ASSERT(fp);", fp);
    struct stat const status = statusOf(fp);
    return checkLength(S_ISREG(status.st_mode) ? status.st_size : seekLength(fp));
}

/// Reads to the end of the file, which must come before the buffer is full, and terminates the text.
bool fillBuffer(FILE* fh, char* buffer, long length) {
    KLT_ASSERT_AT(kModule, 200, "KLT_ASSERT(buffer);", buffer);
    KLT_ASSERT_AT(kModule, 201, "KLT_ASSERT(fh);", fh);
    auto remainder = static_cast<std::size_t>(length);
    while (!std::feof(fh)) {
        std::size_t const count = std::fread(buffer, 1, remainder, fh);
        if (std::ferror(fh))
            return false;
        remainder -= count;
        buffer += count;
        if (remainder == 0)
            return false;
    }
    *buffer = '\0';
    return true;
}

Text allocateText(std::size_t size) {
    KLTFileLocation const where(kModule, 231);
    try {
        return Text(new char[size]);
    } catch (KLTThrowable& error) {
        error.addBackTrace(where, nullptr, "KLT_RETHROW");
        throw;
    } catch (std::bad_alloc const&) {
        KLTOutOfMemoryError(0, nullptr).hurl(where, nullptr, "KLT_THROW");
    } catch (std::exception const& error) {
        KLTStdExceptionError(error).hurl(where, nullptr, "KLT_THROW");
    }
}

/// Asks for large pages under a large text: filling it then costs a few page faults instead of thousands.
void adviseLargePages(char* text, std::size_t size) {
    std::size_t const kLargePage = std::size_t{2} << 20;
    auto const begin = reinterpret_cast<std::uintptr_t>(text);
    std::uintptr_t const alignedBegin = (begin + kLargePage - 1) & ~(kLargePage - 1);
    std::uintptr_t const alignedEnd = (begin + size) & ~(kLargePage - 1);
    if (alignedBegin < alignedEnd) // a refusal does no harm
        madvise(text + (alignedBegin - begin), alignedEnd - alignedBegin, MADV_HUGEPAGE);
}

Text allocateBuffer(std::size_t size) {
    Text buffer = allocateText(size);
    KLT_ASSERT_AT(kModule, 233, "KLT_ASSERT(NULL != buffer);", buffer);
    adviseLargePages(buffer.get(), size);
    return buffer;
}

void checkRead(bool ok) {
    KLT_ASSERT_AT(kModule, 238, "KLT_ASSERT_NAMED(ok, \"Unable to read all of the contents of file \");", ok);
}

void writeCleansedFile(std::string const& name, char const* text) {
    MoFileHandle const file(name + ".cleansed", "w");
    if (file)
        std::fwrite(text, 1, std::strlen(text), file);
}

/// Tells the observer, if there is one, what each step deleted.
void tellCleansed(Patterns const& patterns, MoDiffCleansing::Subject const& master,
                  MoDiffCleansing::Subject const& actual) {
    MoDiffComparisonObserver* const observer = MoDiffComparisonObserver::current();
    if (!observer)
        return;
    observer->textsCleansed(nullptr, master.deleted.front(), actual.deleted.front());
    std::size_t step = 0;
    for (MoDiffNormalizationPattern const* const pattern : patterns) {
        ++step;
        observer->textsCleansed(pattern, master.deleted[step], actual.deleted[step]);
    }
}

/// Cleanses both texts. Returns views of what is left of them.
std::pair<std::string_view, std::string_view> cleanseTexts(char* masterBuffer, char* currentBuffer,
                                                           Patterns const& patterns) {
    KLT_ASSERT_AT(kModule, 124, "KLT_ASSERT(masterBuffer);", masterBuffer);
    KLT_ASSERT_AT(kModule, 125, "KLT_ASSERT(currentBuffer);", currentBuffer);
    MoDiffCleansing::Subject master(masterBuffer);
    MoDiffCleansing::Subject current(currentBuffer);
    MoDiffCleansing::cleanse({&master, &current}, patterns);
    tellCleansed(patterns, master, current);
    return {{masterBuffer, master.length}, {currentBuffer, current.length}};
}

/// The index of the first difference, or -1.
long findDifference(std::string_view master, std::string_view current) {
    std::size_t const common = std::min(master.size(), current.size());
    std::size_t const kStep = 4096; // memcmp() is quick, but tells no position
    std::size_t i = 0;
    while (common - i > kStep && std::memcmp(master.data() + i, current.data() + i, kStep) == 0)
        i += kStep;
    while (i < common && master[i] == current[i])
        ++i;
    return i == common && master.size() == current.size() ? -1 : static_cast<long>(i);
}

/// Equal texts stay equal, and nobody sees them cleansed; but an observer wants to know what cleansing would hide.
void passOverEqualTexts(char* text, Patterns const& patterns) {
    if (!MoDiffComparisonObserver::current()) {
        std::for_each(patterns.begin(), patterns.end(), MoDiffCleansing::checkPattern);
        return;
    }
    MoDiffCleansing::Subject both(text);
    MoDiffCleansing::cleanse({&both}, patterns);
    tellCleansed(patterns, both, both);
}

/// A file that a comparison reads whole.
struct Source {
    explicit Source(std::string const& name) : file(name), opened(file.status()) {}

    /// Nothing can be read from a directory, although it can be opened.
    bool isMissing() const { return !file.isOpen() || S_ISDIR(opened.st_mode); }
    void read();

    MoInputFile file;
    struct stat opened;
    Text text{};
    std::size_t length = 0;
};

void Source::read() {
    bool const isRegular = S_ISREG(opened.st_mode);
    auto const expected = static_cast<std::size_t>(checkLength(isRegular ? opened.st_size : file.seekLength()));
    std::size_t const size = expected + 1;
    text = allocateBuffer(size);
    ssize_t count = 0;
    do { // a regular file comes at once, and with less than was asked for it has ended
        count = file.readSome(text.get() + length, size - length);
        length += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    } while (count > 0 && length < size && !(isRegular && length == expected));
    checkRead(count >= 0 && length < size);
    text[length] = '\0';
}

MoDiffResult* findMissing(std::string const& masterName, std::string const& actualName, bool isMasterMissing,
                          bool isActualMissing) {
    if (isMasterMissing)
        return new MoDiffResultFailFileMissing(masterName, actualName, masterName);
    if (isActualMissing)
        return new MoDiffResultFailFileMissing(masterName, actualName, actualName);
    return nullptr;
}

/// A file that is replaced under its name loses that.
MoDiffComparisonObserver::File describe(struct stat const& opened, struct stat const& read) {
    bool const isSame = opened.st_size == read.st_size && opened.st_nlink == read.st_nlink &&
                        opened.st_mtim.tv_sec == read.st_mtim.tv_sec &&
                        opened.st_mtim.tv_nsec == read.st_mtim.tv_nsec;
    return {opened.st_dev, opened.st_ino, opened.st_mtim.tv_sec, !isSame};
}

/// How many bytes have been read from a file that was read from its start on.
std::size_t bytesRead(FILE* file) {
    return static_cast<std::size_t>(std::max<off_t>(ftello(file), 0)); // negative where nothing could be read
}

} // namespace

/// What has been read from a file for a comparison.
struct MoDiffLib::ReadFile {
    char const* text;
    std::size_t length;
    MoDiffComparisonObserver::File file;
};

void MoDiffLib::tellRead(ReadFile const& master, ReadFile const& actual) {
    MoDiffComparisonObserver::setFiles(master.file, actual.file);
    MoDiffComparisonObserver::current()->textsRead(master.text, master.length, actual.text, actual.length);
}

MoDiffLib::MoDiffLib() = default;

MoDiffLib::~MoDiffLib() = default;

MoDiffResult* MoDiffLib::textFileComparison(std::string const& masterName, std::string const& actualName,
                                            Patterns const& patterns, int writeCleansed) {
    Source master(masterName);
    Source actual(actualName);
    if (MoDiffResult* const missing = findMissing(masterName, actualName, master.isMissing(), actual.isMissing()))
        return missing;
    master.read();
    actual.read();
    if (MoDiffComparisonObserver::current()) {
        auto const readFile = [](Source const& source) {
            return ReadFile{source.text.get(), source.length, describe(source.opened, source.file.status())};
        };
        tellRead(readFile(master), readFile(actual));
    }
    if (!writeCleansed && std::strcmp(master.text.get(), actual.text.get()) == 0) {
        passOverEqualTexts(master.text.get(), patterns);
        return new MoDiffResultPass(masterName, actualName);
    }
    return textBufferComparison(masterName, actualName, master.text, actual.text, patterns, writeCleansed);
}

MoDiffResult* MoDiffLib::textBufferComparison(std::string const& masterName, std::string const& actualName,
                                              Text& masterBuffer, Text& actualBuffer, Patterns const& patterns,
                                              int writeCleansed) {
    auto const [master, actual] = cleanseTexts(masterBuffer.get(), actualBuffer.get(), patterns);
    long const position = findDifference(master, actual);
    if (writeCleansed) {
        writeCleansedFile(masterName, masterBuffer.get());
        writeCleansedFile(actualName, actualBuffer.get());
    }
    int const normalized = patterns.empty() ? 0 : 1;
    return createComparisonResult(masterName, actualName, masterBuffer, actualBuffer, position, normalized);
}

MoDiffResult* MoDiffLib::checkOpenFiles(std::string const& masterName, std::string const& actualName,
                                        MoFileHandle& masterFile, MoFileHandle& actualFile) {
    return findMissing(masterName, actualName, !masterFile, !actualFile);
}

char* MoDiffLib::slurpFile(MoFileHandle& file) {
    long const size = getFileLength(file) + 1;
    Text buffer = allocateBuffer(static_cast<std::size_t>(size));
    std::setvbuf(file, nullptr, _IONBF, 0); // read at once to where it belongs
    checkRead(fillBuffer(file, buffer.get(), size));
    return buffer.release();
}

void MoDiffLib::slurpFiles(MoFileHandle& masterFile, MoFileHandle& actualFile, Text& master, Text& actual) {
    struct stat const masterOpened = statusOf(masterFile);
    struct stat const actualOpened = statusOf(actualFile);
    master.reset(slurpFile(masterFile));
    actual.reset(slurpFile(actualFile));
    if (MoDiffComparisonObserver::current())
        tellRead({master.get(), bytesRead(masterFile), describe(masterOpened, statusOf(masterFile))},
                 {actual.get(), bytesRead(actualFile), describe(actualOpened, statusOf(actualFile))});
}

void MoDiffLib::cleanse(char* masterBuffer, char* currentBuffer, Patterns const& patterns) {
    cleanseTexts(masterBuffer, currentBuffer, patterns);
}

void MoDiffLib::cleanse(char* masterBuffer, char* currentBuffer, Patterns const& patterns, long, long) {
    KLT_ASSERT_AT(kModule, 150, "KLT_ASSERT(masterBuffer);", masterBuffer);
    KLT_ASSERT_AT(kModule, 151, "KLT_ASSERT(currentBuffer);", currentBuffer);
    cleanseTexts(masterBuffer, currentBuffer, patterns);
}

long MoDiffLib::compareStrings(char const* masterBuffer, char const* currentBuffer) {
    KLT_ASSERT_AT(kModule, 164, "KLT_ASSERT(masterBuffer);", masterBuffer);
    KLT_ASSERT_AT(kModule, 165, "KLT_ASSERT(currentBuffer);", currentBuffer);
    return findDifference(masterBuffer, currentBuffer);
}

MoDiffResult* MoDiffLib::createComparisonResult(std::string const& masterName, std::string const& actualName,
                                                Text& masterBuffer, Text& actualBuffer, long position,
                                                int normalized) {
    if (position < 0)
        return new MoDiffResultPass(masterName, actualName);
    if (!normalized)
        return new MoDiffResultFailDiff(masterName, actualName);
    auto* const result =
        new MoDiffResultFailDiffNormalized(masterName, actualName, masterBuffer.get(), actualBuffer.get(), position);
    masterBuffer.release();
    actualBuffer.release();
    return result;
}
