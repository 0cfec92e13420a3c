#ifndef MO_DIFF_XLS_FILE_ENGINE_H
#define MO_DIFF_XLS_FILE_ENGINE_H

#include "MoDiffTextFileTypeEngine.h"

/// Verifies spreadsheets as HTML.
class KLT_EXPORT MoDiffXlsFileEngine : public MoDiffTextFileTypeEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffXlsFileEngine(char const* subDirectory);

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
};

#endif
