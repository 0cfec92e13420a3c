#ifndef MO_DIFF_XML_FILE_ENGINE_H
#define MO_DIFF_XML_FILE_ENGINE_H

#include "MoDiffTextFileTypeEngine.h"

/// Verifies XML; nothing but carriage returns is removed.
class KLT_EXPORT MoDiffXmlFileEngine : public MoDiffTextFileTypeEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffXmlFileEngine(char const* subDirectory);

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
};

#endif
