#ifndef MO_DIFF_FORMAT_H
#define MO_DIFF_FORMAT_H

#include "MoDiffFileEngine.h"
#include "MoDiffNormalizationPattern.h"

#include <list>
#include <string>

/// Where the files of an output format lie.
struct MoDiffFormat {
    char const* typeName;     ///< the last step of the output directory
    char const* masterFolder; ///< between master directory and report name, slashes included
    char const* masterSuffix; ///< wildcard and extension of the masters

    /// The pattern that finds the masters of an actual file for an engine of this format.
    std::string masterGlob(MoDiffFileEngine const& engine, std::string const& actualFile) const;
};

/// A getter of the pattern catalogue. Rows hold getters, not references to the patterns, so that no order of
/// initialization comes in.
using MoDiffPatternGetter = MoDiffNormalizationPattern const& (*)();

/// The patterns that getters up to the first null one give.
std::list<MoDiffNormalizationPattern const*> patternsOf(MoDiffPatternGetter const* getters);

// Lists of patterns stand in the order in which they are applied; a null getter ends them.

/// A format compared as text after cleansing.
struct MoDiffTextFormat {
    MoDiffFormat files;
    MoDiffPatternGetter patterns[11];
};

/// A format compared as text after cleansing in two passes.
struct MoDiffTwoPassFormat {
    MoDiffFormat files;
    MoDiffPatternGetter markupPatterns[4];
    MoDiffPatternGetter dataPatterns[3];
};

/// A format compared by a script.
struct MoDiffToolFormat {
    MoDiffFormat files;
    char const* command; ///< what stands before the two quoted file names, the blank and the opening quote included

    /// Has the command run on two files, by the installed MoDiffScriptRunner or by std::system(). Missing files are
    /// reported, the master first; a status other than 0, whatever the reason, counts as a difference. Returns a new
    /// result that the caller owns.
    MoDiffResult* performDiff(MoDiffFileEngine const& engine, std::string const& masterFile,
                              std::string const& actualFile) const;
};

extern MoDiffTextFormat const kNaoFormat;
extern MoDiffTextFormat const kLayoutDataXmlFormat;
extern MoDiffTextFormat const kPagedLayoutDataXmlFormat;
extern MoDiffTextFormat const kRawXmlFormat;
extern MoDiffTextFormat const kMhtFormat;
extern MoDiffTextFormat const kHtmlFormat;
extern MoDiffTextFormat const kXhtmlFormat;
extern MoDiffTextFormat const kXmlFormat;
extern MoDiffTextFormat const kXlsFormat;
extern MoDiffTextFormat const kXlwaFormat;
extern MoDiffTwoPassFormat const kSingleXlsFormat;
extern MoDiffPatternGetter const kTvdPatterns[]; // where its files lie, the engine's constructor is told
extern MoDiffFormat const kCsvFormat;
extern MoDiffFormat const kCsiFormat;
extern MoDiffToolFormat const kXlsxFormat;
extern MoDiffToolFormat const kPdfFormat;
extern MoDiffToolFormat const kVmdFormat;

#endif
