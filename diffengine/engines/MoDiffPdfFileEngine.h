#ifndef MO_DIFF_PDF_FILE_ENGINE_H
#define MO_DIFF_PDF_FILE_ENGINE_H

#include "MoDiffFileEngine.h"

/// Verifies PDF documents with the script diffPdfFiles.py, found relative to the working directory.
class KLT_EXPORT MoDiffPdfFileEngine : public MoDiffFileEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffPdfFileEngine(char const* subDirectory);

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
    MoDiffResult* performDiff(std::string const& masterFile, std::string const& actualFile) const override;
};

#endif
