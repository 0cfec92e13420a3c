#ifndef MO_DIFF_PRP_FILE_ENGINE_H
#define MO_DIFF_PRP_FILE_ENGINE_H

#include "MoDiffTextFileTypeEngine.h"

/// Verifies property files, in directories that the driver chooses; nothing but carriage returns is removed.
class KLT_EXPORT MoDiffPrpFileEngine : public MoDiffTextFileTypeEngine {
public:
    /// The arguments are those of MoDiffTvdFileEngine.
    MoDiffPrpFileEngine(char const* subDirectory, char const* outputDirectoryTypeName,
                        char const* masterSubDirectory);
    ~MoDiffPrpFileEngine() override;

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;

private:
    std::string m_outputDirectoryTypeName;
    std::string m_masterSubDirectory;
};

#endif
