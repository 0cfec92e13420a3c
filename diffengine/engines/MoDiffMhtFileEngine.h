#ifndef MO_DIFF_MHT_FILE_ENGINE_H
#define MO_DIFF_MHT_FILE_ENGINE_H

#include "MoDiffTextFileTypeEngine.h"

/// Verifies MHT.
class KLT_EXPORT MoDiffMhtFileEngine : public MoDiffTextFileTypeEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffMhtFileEngine(char const* subDirectory);

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
};

#endif
