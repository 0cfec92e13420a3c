#ifndef MO_DIFF_NAO_FILE_ENGINE_H
#define MO_DIFF_NAO_FILE_ENGINE_H

#include "MoDiffTextFileTypeEngine.h"

/// Verifies NAO.
class KLT_EXPORT MoDiffNaoFileEngine : public MoDiffTextFileTypeEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffNaoFileEngine(char const* subDirectory);

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
};

#endif
