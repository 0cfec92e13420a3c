#include "MoDiffXlsxFileEngine.h"

#include "MoDiffFormat.h"

MoDiffXlsxFileEngine::MoDiffXlsxFileEngine(char const* subDirectory) : MoDiffFileEngine(subDirectory) {
}

std::string MoDiffXlsxFileEngine::getOutputDirectoryTypeName() const {
    return kXlsxFormat.files.typeName;
}

std::string MoDiffXlsxFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kXlsxFormat.files.masterGlob(*this, actualFile);
}

MoDiffResult* MoDiffXlsxFileEngine::performDiff(std::string const& masterFile, std::string const& actualFile) const {
    return kXlsxFormat.performDiff(*this, masterFile, actualFile);
}
