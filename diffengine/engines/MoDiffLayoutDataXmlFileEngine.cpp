#include "MoDiffLayoutDataXmlFileEngine.h"

#include "MoDiffFormat.h"

MoDiffLayoutDataXmlFileEngine::MoDiffLayoutDataXmlFileEngine(char const* subDirectory)
    : MoDiffTextFileTypeEngine(subDirectory, kLayoutDataXmlFormat) {
}

std::string MoDiffLayoutDataXmlFileEngine::getOutputDirectoryTypeName() const {
    return kLayoutDataXmlFormat.files.typeName;
}

std::string MoDiffLayoutDataXmlFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kLayoutDataXmlFormat.files.masterGlob(*this, actualFile);
}
