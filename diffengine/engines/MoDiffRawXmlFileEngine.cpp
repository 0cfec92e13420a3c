#include "MoDiffRawXmlFileEngine.h"

#include "MoDiffFormat.h"

MoDiffRawXmlFileEngine::MoDiffRawXmlFileEngine(char const* subDirectory)
    : MoDiffTextFileTypeEngine(subDirectory, kRawXmlFormat) {
}

std::string MoDiffRawXmlFileEngine::getOutputDirectoryTypeName() const {
    return kRawXmlFormat.files.typeName;
}

std::string MoDiffRawXmlFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kRawXmlFormat.files.masterGlob(*this, actualFile);
}
