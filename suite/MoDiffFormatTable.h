#ifndef MO_DIFF_FORMAT_TABLE_H
#define MO_DIFF_FORMAT_TABLE_H

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

/// An output format by the word that configuration, options and records have for it.
struct MoDiffFormatRow {
    /// How files are compared, which tells where the place of a difference comes from: the text comparison after
    /// cleansing gives it with its result, a script tells it in its own words.
    enum Comparison { eCleansedText, eText, eBytes, eScript };
    using Factory = std::unique_ptr<MoDiffFileEngine> (*)(MoDiffEngineSettings const&);

    char const* word;
    MoOutputFormat format;
    Comparison comparison;
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
