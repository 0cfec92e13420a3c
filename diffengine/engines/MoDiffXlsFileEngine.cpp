#include "MoDiffXlsFileEngine.h"

#include "MoDiffFormat.h"

MoDiffXlsFileEngine::MoDiffXlsFileEngine(char const* subDirectory)
    : MoDiffTextFileTypeEngine(subDirectory, kXlsFormat) {
}

std::string MoDiffXlsFileEngine::getOutputDirectoryTypeName() const {
    return kXlsFormat.files.typeName;
}

std::string MoDiffXlsFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kXlsFormat.files.masterGlob(*this, actualFile);
}
