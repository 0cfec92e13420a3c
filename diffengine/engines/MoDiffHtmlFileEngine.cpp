#include "MoDiffHtmlFileEngine.h"

#include "MoDiffFormat.h"

MoDiffHtmlFileEngine::MoDiffHtmlFileEngine(char const* subDirectory)
    : MoDiffTextFileTypeEngine(subDirectory, kHtmlFormat) {
}

std::string MoDiffHtmlFileEngine::getOutputDirectoryTypeName() const {
    return kHtmlFormat.files.typeName;
}

std::string MoDiffHtmlFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kHtmlFormat.files.masterGlob(*this, actualFile);
}
