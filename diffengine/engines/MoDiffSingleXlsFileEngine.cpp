#include "MoDiffSingleXlsFileEngine.h"

#include "MoDiffFormatEngine.h"
#include "MoDiffLib.h"
#include "MoDiffResult.h"
#include "MoFileHandle.h"

MoDiffSingleXlsFileEngine::MoDiffSingleXlsFileEngine(char const* subDirectory)
    : MoDiffFileEngine(subDirectory), m_markupPatterns(patternsOf(kSingleXlsFormat.markupPatterns)),
      m_dataPatterns(patternsOf(kSingleXlsFormat.dataPatterns)) {
}

MoDiffSingleXlsFileEngine::~MoDiffSingleXlsFileEngine() = default;

MO_DIFF_ENGINE_FILES(MoDiffSingleXlsFileEngine, kSingleXlsFormat.files)

std::list<MoDiffNormalizationPattern const*> MoDiffSingleXlsFileEngine::getCleansingPatterns() const {
    std::list<MoDiffNormalizationPattern const*> patterns = m_markupPatterns;
    patterns.insert(patterns.end(), m_dataPatterns.begin(), m_dataPatterns.end());
    return patterns;
}

MoDiffResult* MoDiffSingleXlsFileEngine::performDiff(std::string const& masterFile,
                                                     std::string const& actualFile) const {
    MoFileHandle masterHandle(masterFile, "r");
    MoFileHandle actualHandle(actualFile, "r");
    if (MoDiffResult* const missing = MoDiffLib::checkOpenFiles(masterFile, actualFile, masterHandle, actualHandle))
        return missing;
    MoDiffLib::Text master;
    MoDiffLib::Text actual;
    MoDiffLib::slurpFiles(masterHandle, actualHandle, master, actual);
    MoDiffLib::cleanse(master.get(), actual.get(), m_markupPatterns);
    MoDiffLib::cleanse(master.get(), actual.get(), m_dataPatterns);
    long const comparison = MoDiffLib::compareStrings(master.get(), actual.get());
    return MoDiffLib::createComparisonResult(masterFile, actualFile, master, actual, comparison, /*normalized=*/1);
}
