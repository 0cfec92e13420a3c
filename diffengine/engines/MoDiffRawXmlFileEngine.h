#ifndef MO_DIFF_RAW_XML_FILE_ENGINE_H
#define MO_DIFF_RAW_XML_FILE_ENGINE_H

#include "MoDiffTextFileTypeEngine.h"

/// Verifies raw XML.
class KLT_EXPORT MoDiffRawXmlFileEngine : public MoDiffTextFileTypeEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffRawXmlFileEngine(char const* subDirectory);

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
};

#endif
