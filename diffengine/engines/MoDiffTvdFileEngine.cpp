#include "MoDiffTvdFileEngine.h"

#include "MoDiffConfiguredDirectory.h"
#include "MoDiffFormat.h"

MoDiffTvdFileEngine::MoDiffTvdFileEngine(char const* subDirectory, char const* outputDirectoryTypeName,
                                         char const* masterSubDirectory, char const* masterNameSuffix)
    : MoDiffTextFileTypeEngine(subDirectory),
      m_outputDirectoryTypeName(MoDiffConfiguredDirectory::required(outputDirectoryTypeName)),
      m_masterSubDirectory(MoDiffConfiguredDirectory::optional(masterSubDirectory)),
      m_masterNameSuffix(MoDiffConfiguredDirectory::optional(masterNameSuffix)) {
    for (MoDiffNormalizationPattern const* const pattern : patternsOf(kTvdPatterns))
        addCleansingPattern(*pattern);
}

MoDiffTvdFileEngine::~MoDiffTvdFileEngine() = default;

std::string MoDiffTvdFileEngine::getOutputDirectoryTypeName() const {
    return m_outputDirectoryTypeName;
}

std::string MoDiffTvdFileEngine::getMasterFileGlobExpression(std::string const& actualFile) const {
    std::string expression = MoDiffConfiguredDirectory::reportPath(*this, m_masterSubDirectory, actualFile) + "*";
    if (!m_masterNameSuffix.empty())
        expression += "_" + m_masterNameSuffix;
    return expression + ".tvd";
}
