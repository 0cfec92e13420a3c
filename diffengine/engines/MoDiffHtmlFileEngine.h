#ifndef MO_DIFF_HTML_FILE_ENGINE_H
#define MO_DIFF_HTML_FILE_ENGINE_H

#include "MoDiffTextFileTypeEngine.h"

/// Verifies HTML.
class KLT_EXPORT MoDiffHtmlFileEngine : public MoDiffTextFileTypeEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffHtmlFileEngine(char const* subDirectory);

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
};

#endif
