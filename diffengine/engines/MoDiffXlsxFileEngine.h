#ifndef MO_DIFF_XLSX_FILE_ENGINE_H
#define MO_DIFF_XLSX_FILE_ENGINE_H

#include "MoDiffFileEngine.h"

/// Verifies XLSX workbooks with the script DiffXlsx.py, found relative to the working directory.
class KLT_EXPORT MoDiffXlsxFileEngine : public MoDiffFileEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffXlsxFileEngine(char const* subDirectory);

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
    MoDiffResult* performDiff(std::string const& masterFile, std::string const& actualFile) const override;
};

#endif
