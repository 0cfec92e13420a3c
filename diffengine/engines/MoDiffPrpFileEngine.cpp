#include "MoDiffPrpFileEngine.h"

#include "MoDiffConfiguredDirectory.h"

MoDiffPrpFileEngine::MoDiffPrpFileEngine(char const* subDirectory, char const* outputDirectoryTypeName,
                                         char const* masterSubDirectory)
    : MoDiffTextFileTypeEngine(subDirectory),
      m_outputDirectoryTypeName(MoDiffConfiguredDirectory::required(outputDirectoryTypeName)),
      m_masterSubDirectory(MoDiffConfiguredDirectory::optional(masterSubDirectory)) {
}

MoDiffPrpFileEngine::~MoDiffPrpFileEngine() = default;

std::string MoDiffPrpFileEngine::getOutputDirectoryTypeName() const {
    return m_outputDirectoryTypeName;
}

std::string MoDiffPrpFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    return MoDiffConfiguredDirectory::reportPath(*this, m_masterSubDirectory, actualFile) + "*.prp";
}
