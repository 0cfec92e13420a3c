#include "MoDiffXhtmlFileEngine.h"

#include "MoDiffFormat.h"

MoDiffXhtmlFileEngine::MoDiffXhtmlFileEngine(char const* subDirectory)
    : MoDiffTextFileTypeEngine(subDirectory, kXhtmlFormat) {
}

std::string MoDiffXhtmlFileEngine::getOutputDirectoryTypeName() const {
    return kXhtmlFormat.files.typeName;
}

std::string MoDiffXhtmlFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kXhtmlFormat.files.masterGlob(*this, actualFile);
}
