#include "MoDiffPagedLayoutDataXmlFileEngine.h"

#include "MoDiffFormat.h"

MoDiffPagedLayoutDataXmlFileEngine::MoDiffPagedLayoutDataXmlFileEngine(char const* subDirectory)
    : MoDiffTextFileTypeEngine(subDirectory, kPagedLayoutDataXmlFormat) {
}

std::string MoDiffPagedLayoutDataXmlFileEngine::getOutputDirectoryTypeName() const {
    return kPagedLayoutDataXmlFormat.files.typeName;
}

std::string MoDiffPagedLayoutDataXmlFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kPagedLayoutDataXmlFormat.files.masterGlob(*this, actualFile);
}
