#include "MoDiffFileEngine.h"

#include "KLTAssert.h"
#include "KLTFmDir.h"
#include "MoDiffComparisonObserver.h"
#include "MoDiffListener.h"
#include "MoGlob.h"
#include "MoHelper.h"
#include "MoInputFile.h"

#include <cstring>
#include <memory>

namespace {

unsigned short const kRegularFileReadableByOwner = 0x8100; // S_IFREG + S_IRUSR

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

std::size_t const kBlockSize = 8192;

void tellBlock(MoDiffComparisonObserver::Side side, char const* block, ssize_t count) {
    MoDiffComparisonObserver* const observer = MoDiffComparisonObserver::current();
    if (observer && count > 0)
        observer->blockRead(side, block, static_cast<std::size_t>(count));
}

bool areContentsEqual(MoInputFile& master, MoInputFile& actual) {
    // Aligned, since the kernel copies to whole lines of the processor's cache faster.
    alignas(64) char masterBlock[kBlockSize];
    alignas(64) char actualBlock[kBlockSize];
    for (;;) {
        ssize_t const masterCount = master.read(masterBlock, kBlockSize);
        ssize_t const actualCount = actual.read(actualBlock, kBlockSize);
        tellBlock(MoDiffComparisonObserver::eMaster, masterBlock, masterCount);
        tellBlock(MoDiffComparisonObserver::eActual, actualBlock, actualCount);
        if (masterCount < 0 || masterCount != actualCount)
            return false;
        auto const count = static_cast<std::size_t>(masterCount);
        if (std::memcmp(masterBlock, actualBlock, count) != 0)
            return false;
        if (count < kBlockSize)
            return true;
    }
}

} // namespace

void MoDiffFileEngine::Notifier::operator()(MoDiffListener* listener) const {
    KLT_ASSERT_AT("MoDiffFileEngine", 52, "KLT_ASSERT(listener);", listener);
    m_result.notifyListener(*listener);
}

MoDiffFileEngine::MoDiffFileEngine(char const* subDirectory) : m_subDirectory(subDirectory) {
}

MoDiffFileEngine::~MoDiffFileEngine() = default;

void MoDiffFileEngine::verifyOutput(std::set<MoDiffListener*> const& listeners, char const* actualFileName) const {
    std::string const actualFile = actualFileName;
    std::list<std::string> masters;
    globFiles(getMasterFileGlobExpression(actualFile).c_str(), masters);
    for (std::string const& master : masters)
        compareMaster(master, listeners);
}

std::string MoDiffFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return getMasterFileDirectory(actualFile) + "/" + getReportName(actualFile) + "*.pdf";
}

void MoDiffFileEngine::globFiles(char const* pattern, std::list<std::string>& files) const {
    MoGlob::globFiles(pattern, files);
}

bool MoDiffFileEngine::doesFileExist(std::string const& path) const {
    return KLTFmDir::exists(path.c_str(), kRegularFileReadableByOwner);
}

bool MoDiffFileEngine::hasSubDirectory() const {
    return m_subDirectory && *m_subDirectory;
}

std::string MoDiffFileEngine::getOutputDirectory() const {
    std::string directory = "../webcontent/" + getOutputDirectoryTypeName();
    if (hasSubDirectory())
        directory.append("/").append(m_subDirectory);
    return directory;
}

std::string MoDiffFileEngine::getMasterFileDirectory(std::string const& actualFile) const {
    std::string directory = directoryOf(actualFile);
    KLTFmDir::joinPath(directory, "Masters");
    if (hasSubDirectory())
        KLTFmDir::joinPath(directory, m_subDirectory);
    return directory;
}

std::string MoDiffFileEngine::getReportName(std::string const& actualFile) const {
    std::string base;
    std::string extension;
    MoHelper::fileBasename(fileOf(actualFile), base, extension);
    return base;
}

std::string MoDiffFileEngine::getActualFile(std::string const& masterFile) const {
    return getOutputDirectory() + "/" + fileOf(masterFile);
}

void MoDiffFileEngine::compareMaster(std::string const& masterFile,
                                     std::set<MoDiffListener*> const& listeners) const {
    std::string const actualFile = getActualFile(masterFile);
    std::unique_ptr<MoDiffResult const> const result(
        doesFileExist(actualFile) ? performDiff(masterFile, actualFile)
                                  : new MoDiffResultFailFileMissing(masterFile, actualFile, actualFile));
    notifyListeners(listeners, *result);
}

void MoDiffFileEngine::notifyListeners(std::set<MoDiffListener*> const& listeners, MoDiffResult const& result) const {
    Notifier const notify(result);
    // A listener may remove itself or others: the next one is looked for in the set as it is then.
    for (auto next = listeners.begin(); next != listeners.end();) {
        MoDiffListener* const served = *next;
        notify(served);
        next = listeners.upper_bound(served);
    }
}

MoDiffResult* MoDiffFileEngine::areFilesIdentical(std::string const& masterFile, std::string const& actualFile) {
    MoInputFile master(masterFile);
    if (!master.isOpen())
        return new MoDiffResultFailFileMissing(masterFile, actualFile, masterFile);
    MoInputFile actual(actualFile);
    if (!actual.isOpen())
        return new MoDiffResultFailFileMissing(masterFile, actualFile, actualFile);
    if (areContentsEqual(master, actual))
        return new MoDiffResultPass(masterFile, actualFile);
    return new MoDiffResultFailDiff(masterFile, actualFile);
}
