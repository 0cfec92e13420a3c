#ifndef MO_DIFF_XLWA_FILE_ENGINE_H
#define MO_DIFF_XLWA_FILE_ENGINE_H

#include "MoDiffTextFileTypeEngine.h"

/// Verifies spreadsheets as MHT.
class KLT_EXPORT MoDiffXlwaFileEngine : public MoDiffTextFileTypeEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffXlwaFileEngine(char const* subDirectory);

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
};

#endif
