#include "MoDiffCsiFileEngine.h"

#include "MoDiffFormatEngine.h"
#include "MoDiffLib.h"

MoDiffCsiFileEngine::MoDiffCsiFileEngine(char const* subDirectory) : MoDiffFileEngine(subDirectory) {
}

MO_DIFF_ENGINE_FILES(MoDiffCsiFileEngine, kCsiFormat)

MoDiffResult* MoDiffCsiFileEngine::performDiff(std::string const& masterFile, std::string const& actualFile) const {
    return MoDiffLib::textFileComparison(masterFile, actualFile, {}, /*writeCleansed=*/0);
}
