#ifndef MO_DIFF_CSV_FILE_ENGINE_H
#define MO_DIFF_CSV_FILE_ENGINE_H

#include "MoDiffFileEngine.h"

/// Verifies CSV, byte for byte.
class KLT_EXPORT MoDiffCsvFileEngine : public MoDiffFileEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffCsvFileEngine(char const* subDirectory);

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
    MoDiffResult* performDiff(std::string const& masterFile, std::string const& actualFile) const override;
};

#endif
