#include "MoDiffPdfFileEngine.h"

#include "MoDiffFormat.h"

MoDiffPdfFileEngine::MoDiffPdfFileEngine(char const* subDirectory) : MoDiffFileEngine(subDirectory) {
}

std::string MoDiffPdfFileEngine::getOutputDirectoryTypeName() const {
    return kPdfFormat.files.typeName;
}

std::string MoDiffPdfFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kPdfFormat.files.masterGlob(*this, actualFile);
}

MoDiffResult* MoDiffPdfFileEngine::performDiff(std::string const& masterFile, std::string const& actualFile) const {
    return kPdfFormat.performDiff(*this, masterFile, actualFile);
}
