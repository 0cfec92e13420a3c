#include "MoDiffCsvFileEngine.h"

#include "MoDiffFormat.h"

MoDiffCsvFileEngine::MoDiffCsvFileEngine(char const* subDirectory) : MoDiffFileEngine(subDirectory) {
}

std::string MoDiffCsvFileEngine::getOutputDirectoryTypeName() const {
    return kCsvFormat.typeName;
}

std::string MoDiffCsvFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kCsvFormat.masterGlob(*this, actualFile);
}

MoDiffResult* MoDiffCsvFileEngine::performDiff(std::string const& masterFile, std::string const& actualFile) const {
    return areFilesIdentical(masterFile, actualFile);
}
