#include "MoDiffVmdFileEngine.h"

#include "MoDiffFormat.h"

MoDiffVmdFileEngine::MoDiffVmdFileEngine(char const* subDirectory) : MoDiffFileEngine(subDirectory) {
}

std::string MoDiffVmdFileEngine::getOutputDirectoryTypeName() const {
    return kVmdFormat.files.typeName;
}

std::string MoDiffVmdFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kVmdFormat.files.masterGlob(*this, actualFile);
}

MoDiffResult* MoDiffVmdFileEngine::performDiff(std::string const& masterFile, std::string const& actualFile) const {
    return kVmdFormat.performDiff(*this, masterFile, actualFile);
}
