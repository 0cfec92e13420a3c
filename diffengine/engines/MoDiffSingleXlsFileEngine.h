#ifndef MO_DIFF_SINGLE_XLS_FILE_ENGINE_H
#define MO_DIFF_SINGLE_XLS_FILE_ENGINE_H

#include "MoDiffFileEngine.h"

#include <list>

class MoDiffNormalizationPattern;

/// Verifies single-sheet spreadsheets as HTML, cleansed in two passes: first the markup, then the data.
class KLT_EXPORT MoDiffSingleXlsFileEngine : public MoDiffFileEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffSingleXlsFileEngine(char const* subDirectory);
    ~MoDiffSingleXlsFileEngine() override;

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
    /// Every difference carries both cleansed texts.
    MoDiffResult* performDiff(std::string const& masterFile, std::string const& actualFile) const override;
    /// The patterns of both passes, in the order in which they are applied, behind the deletion of carriage returns.
    std::list<MoDiffNormalizationPattern const*> getCleansingPatterns() const;

private:
    std::list<MoDiffNormalizationPattern const*> m_markupPatterns;
    std::list<MoDiffNormalizationPattern const*> m_dataPatterns;
};

#endif
