#include "MoDiffMhtFileEngine.h"

#include "MoDiffFormat.h"

MoDiffMhtFileEngine::MoDiffMhtFileEngine(char const* subDirectory)
    : MoDiffTextFileTypeEngine(subDirectory, kMhtFormat) {
}

std::string MoDiffMhtFileEngine::getOutputDirectoryTypeName() const {
    return kMhtFormat.files.typeName;
}

std::string MoDiffMhtFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return kMhtFormat.files.masterGlob(*this, actualFile);
}
