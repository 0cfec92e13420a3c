#ifndef MO_DIFF_TVD_FILE_ENGINE_H
#define MO_DIFF_TVD_FILE_ENGINE_H

#include "MoDiffTextFileTypeEngine.h"

/// Verifies chart files, in directories that the driver chooses.
class KLT_EXPORT MoDiffTvdFileEngine : public MoDiffTextFileTypeEngine {
public:
    /// @param subDirectory            as for MoDiffFileEngine; not copied
    /// @param outputDirectoryTypeName the last step of the output directory; null raises std::logic_error
    /// @param masterSubDirectory      a folder below the master directory; null or empty for none
    /// @param masterNameSuffix        what the masters' names carry after "_", before the extension; null or empty
    /// for
    ///                                none
    MoDiffTvdFileEngine(char const* subDirectory, char const* outputDirectoryTypeName, char const* masterSubDirectory,
                        char const* masterNameSuffix);
    ~MoDiffTvdFileEngine() override;

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;

private:
    std::string m_outputDirectoryTypeName;
    std::string m_masterSubDirectory;
    std::string m_masterNameSuffix;
};

#endif
