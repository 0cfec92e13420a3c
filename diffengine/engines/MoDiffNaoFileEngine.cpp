#include "MoDiffNaoFileEngine.h"

#include "MoDiffFormat.h"

MoDiffNaoFileEngine::MoDiffNaoFileEngine(char const* subDirectory)
    : MoDiffTextFileTypeEngine(subDirectory, kNaoFormat) {
}

std::string MoDiffNaoFileEngine::getOutputDirectoryTypeName() const {
    return kNaoFormat.files.typeName;
}

std::string MoDiffNaoFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kNaoFormat.files.masterGlob(*this, actualFile);
}
