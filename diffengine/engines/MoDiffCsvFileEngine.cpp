#include "MoDiffCsvFileEngine.h"

#include "MoDiffFormatEngine.h"

MoDiffCsvFileEngine::MoDiffCsvFileEngine(char const* subDirectory) : MoDiffFileEngine(subDirectory) {
}

MO_DIFF_ENGINE_FILES(MoDiffCsvFileEngine, kCsvFormat)

MoDiffResult* MoDiffCsvFileEngine::performDiff(std::string const& masterFile, std::string const& actualFile) const {
    return areFilesIdentical(masterFile, actualFile);
}
