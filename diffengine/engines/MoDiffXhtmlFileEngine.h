#ifndef MO_DIFF_XHTML_FILE_ENGINE_H
#define MO_DIFF_XHTML_FILE_ENGINE_H

#include "MoDiffTextFileTypeEngine.h"

/// Verifies XHTML.
class KLT_EXPORT MoDiffXhtmlFileEngine : public MoDiffTextFileTypeEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffXhtmlFileEngine(char const* subDirectory);

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
};

#endif
