#include "MoDiffXlwaFileEngine.h"

#include "MoDiffFormat.h"

MoDiffXlwaFileEngine::MoDiffXlwaFileEngine(char const* subDirectory)
    : MoDiffTextFileTypeEngine(subDirectory, kXlwaFormat) {
}

std::string MoDiffXlwaFileEngine::getOutputDirectoryTypeName() const {
    return kXlwaFormat.files.typeName;
}

std::string MoDiffXlwaFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kXlwaFormat.files.masterGlob(*this, actualFile);
}
