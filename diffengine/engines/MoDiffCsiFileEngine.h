#ifndef MO_DIFF_CSI_FILE_ENGINE_H
#define MO_DIFF_CSI_FILE_ENGINE_H

#include "MoDiffFileEngine.h"

/// Verifies CSI as text; nothing but carriage returns is removed.
class KLT_EXPORT MoDiffCsiFileEngine : public MoDiffFileEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffCsiFileEngine(char const* subDirectory);

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
    MoDiffResult* performDiff(std::string const& masterFile, std::string const& actualFile) const override;
};

#endif
