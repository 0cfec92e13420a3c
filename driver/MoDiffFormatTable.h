#ifndef MO_DIFF_FORMAT_TABLE_H
#define MO_DIFF_FORMAT_TABLE_H

#include "MoDiffConsole.h"
#include "MoDiffFileEngine.h"
#include "MoDiffToolCheck.h"
#include "MoOutputFormat.h"

#include <memory>
#include <string>
#include <vector>

/// How an engine is to be set up. An engine keeps a pointer to the sub-directory, so this must outlive it.
struct MoDiffEngineSettings {
    std::string subDirectory;
    std::string typeName;           ///< chart and property engines
    std::string masterSubDirectory; ///< chart and property engines
    std::string masterSuffix;       ///< chart engine
};

/// An output format as the command line knows it.
struct MoDiffFormatRow {
    using Factory = std::unique_ptr<MoDiffFileEngine> (*)(MoDiffEngineSettings const&);

    char const* word;
    MoOutputFormat format;
    MoDiffConsole::Comparison comparison;
    Factory makeEngine;
    bool takesDirectories;  ///< type name (required) and master sub-directory
    bool takesSuffix;       ///< master suffix
    MoDiffTool const* tool; ///< the script that compares; null when the library does
};

namespace MoDiffFormatTable {

/// All formats, in the order of MoOutputFormat.
std::vector<MoDiffFormatRow> const& rows();

/// The row for a word; null when there is none.
MoDiffFormatRow const* find(std::string const& word);

/// How files are compared, in words.
char const* comparisonWords(MoDiffFormatRow const& row);

/// All words, separated by ", ".
std::string words();

} // namespace MoDiffFormatTable

#endif
