#ifndef MO_DIFF_LAYOUT_DATA_XML_FILE_ENGINE_H
#define MO_DIFF_LAYOUT_DATA_XML_FILE_ENGINE_H

#include "MoDiffTextFileTypeEngine.h"

/// Verifies layout data XML.
class KLT_EXPORT MoDiffLayoutDataXmlFileEngine : public MoDiffTextFileTypeEngine {
public:
    /// @param subDirectory as for MoDiffFileEngine
    explicit MoDiffLayoutDataXmlFileEngine(char const* subDirectory);

    std::string getOutputDirectoryTypeName() const override;
    std::string getMasterFileGlobExpression(std::string const& actualFile) const override;
};

#endif
