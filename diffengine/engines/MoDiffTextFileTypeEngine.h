#ifndef MO_DIFF_TEXT_FILE_TYPE_ENGINE_H
#define MO_DIFF_TEXT_FILE_TYPE_ENGINE_H

#include "MoDiffFileEngine.h"

#include <list>

class MoDiffNormalizationPattern;
struct MoDiffTextFormat;

/// Base of the engines whose files are compared as text after cleansing.
class KLT_EXPORT MoDiffTextFileTypeEngine : public MoDiffFileEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine; starts without patterns
    explicit MoDiffTextFileTypeEngine(char const* subDirectory);
    ~MoDiffTextFileTypeEngine() override;

    std::string getOutputDirectoryTypeName() const override = 0;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override = 0;
    /// Compares with MoDiffLib::textFileComparison and this engine's patterns.
    MoDiffResult* performDiff(std::string const& masterFile, std::string const& actualFile) const override;

    /// Appends a pattern to those applied; it must outlive the engine. The same one may be added again.
    void addCleansingPattern(MoDiffNormalizationPattern const& pattern);
    /// The patterns in the order in which they are applied, behind the deletion of carriage returns.
    std::list<MoDiffNormalizationPattern const*> const& getCleansingPatterns() const { return m_cleansingPatterns; }

protected:
    /// Starts with the patterns of a format.
    MoDiffTextFileTypeEngine(char const* subDirectory, MoDiffTextFormat const& format);

private:
    std::list<MoDiffNormalizationPattern const*> m_cleansingPatterns;
};

#endif
