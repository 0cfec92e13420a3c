#ifndef MO_DIFF_VMD_FILE_ENGINE_H
#define MO_DIFF_VMD_FILE_ENGINE_H

#include "MoDiffFileEngine.h"

/// Verifies VMD files with the script diffvmd.py, found relative to the working directory.
class KLT_EXPORT MoDiffVmdFileEngine : public MoDiffFileEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffVmdFileEngine(char const* subDirectory);

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
    MoDiffResult* performDiff(std::string const& masterFile, std::string const& actualFile) const override;
};

#endif
