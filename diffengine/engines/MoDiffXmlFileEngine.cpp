#include "MoDiffXmlFileEngine.h"

#include "MoDiffFormat.h"

MoDiffXmlFileEngine::MoDiffXmlFileEngine(char const* subDirectory)
    : MoDiffTextFileTypeEngine(subDirectory, kXmlFormat) {
}

std::string MoDiffXmlFileEngine::getOutputDirectoryTypeName() const {
    return kXmlFormat.files.typeName;
}

std::string MoDiffXmlFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kXmlFormat.files.masterGlob(*this, actualFile);
}
