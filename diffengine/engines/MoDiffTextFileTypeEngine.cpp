#include "MoDiffTextFileTypeEngine.h"

#include "MoDiffFormat.h"
#include "MoDiffLib.h"

MoDiffTextFileTypeEngine::MoDiffTextFileTypeEngine(char const* subDirectory) : MoDiffFileEngine(subDirectory) {
}

MoDiffTextFileTypeEngine::MoDiffTextFileTypeEngine(char const* subDirectory, MoDiffTextFormat const& format)
    : MoDiffFileEngine(subDirectory), m_cleansingPatterns(patternsOf(format.patterns)) {
}

MoDiffTextFileTypeEngine::~MoDiffTextFileTypeEngine() = default;

MoDiffResult* MoDiffTextFileTypeEngine::performDiff(std::string const& masterFile,
                                                    std::string const& actualFile) const {
    return MoDiffLib::textFileComparison(masterFile, actualFile, m_cleansingPatterns, /*writeCleansed=*/0);
}

void MoDiffTextFileTypeEngine::addCleansingPattern(MoDiffNormalizationPattern const& pattern) {
    m_cleansingPatterns.push_back(&pattern);
}
