#ifndef MO_DIFF_MASTER_PLACE_H
#define MO_DIFF_MASTER_PLACE_H

#include "MoDiffFormatTable.h"
#include "MoDiffSuiteConfiguration.h"

#include <string>
#include <string_view>
#include <vector>

/// Where a format's engine looks for masters, taken from the glob that it makes for a report, so that the rule stands
/// with the engines alone.
struct MoDiffMasterPlace {
    MoDiffFormatRow const* format;
    MoDiffEngineSettings settings; ///< without sub-directory
    std::string folder;            ///< below "Masters", or below a sub-directory there; "" for none
    std::string ending;            ///< of the masters' names
    bool isSelected;               ///< whether the configuration has the format
    std::string origin;            ///< file:line:column of the table; "" for formats without one

    /// Those of all formats, selected or not; those of charts and properties by their tables.
    static std::vector<MoDiffMasterPlace> all(MoDiffSuiteConfiguration const& configuration);

    /// Whether a file in the folder is a master.
    bool takes(std::string_view fileName) const;
    /// The ending's part from the last dot on, which output files share whatever their masters' names carry.
    std::string extension() const { return ending.substr(ending.rfind('.')); }
};

#endif
