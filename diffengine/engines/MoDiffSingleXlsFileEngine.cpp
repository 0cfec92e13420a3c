#include "MoDiffSingleXlsFileEngine.h"

#include "MoDiffFormat.h"
#include "MoDiffLib.h"
#include "MoDiffNormalizationPatterns.h"
#include "MoDiffResult.h"
#include "MoFileHandle.h"

using P = MoDiffNormalizationPatterns;

MoDiffSingleXlsFileEngine::MoDiffSingleXlsFileEngine(char const* subDirectory)
    : MoDiffFileEngine(subDirectory), m_markupPatterns{&P::getScriptPattern(), &P::getImageDirectoryPattern(),
                                                       &P::getExcelChartWidthPattern()},
      m_dataPatterns{&P::getExcelDataPattern(), &P::getExponentialFloatingPattern()} {
}

MoDiffSingleXlsFileEngine::~MoDiffSingleXlsFileEngine() = default;

std::string MoDiffSingleXlsFileEngine::getOutputDirectoryTypeName() const {
    return kSingleXlsFormat.typeName;
}

std::string MoDiffSingleXlsFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kSingleXlsFormat.masterGlob(*this, actualFile);
}

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
