#include "MoDiffCsiFileEngine.h"

#include "MoDiffFormat.h"
#include "MoDiffLib.h"

MoDiffCsiFileEngine::MoDiffCsiFileEngine(char const* subDirectory) : MoDiffFileEngine(subDirectory) {
}

std::string MoDiffCsiFileEngine::getOutputDirectoryTypeName() const {
    return kCsiFormat.typeName;
}

std::string MoDiffCsiFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kCsiFormat.masterGlob(*this, actualFile);
}

MoDiffResult* MoDiffCsiFileEngine::performDiff(std::string const& masterFile, std::string const& actualFile) const {
    return MoDiffLib::textFileComparison(masterFile, actualFile, {}, /*writeCleansed=*/0);
}
