#include "MoDiffFormat.h"

#include "MoDiffNormalizationPatterns.h"
#include "MoDiffResultFailDiff.h"
#include "MoDiffResultFailFileMissing.h"
#include "MoDiffResultPass.h"
#include "MoDiffScriptRunner.h"

#include <cstdlib>
#include <cstring>

namespace {

using P = MoDiffNormalizationPatterns;

/// A file name as it must stand between double quotes in a shell command.
std::string quotedContent(std::string const& name) {
    std::string content;
    for (char const character : name) {
        if (std::strchr("\"`$\\", character))
            content += '\\';
        content += character;
    }
    return content;
}

} // namespace

// One row a format, so that look-alikes can be compared by eye: where its files lie, then what compares them.
// clang-format off

MoDiffTextFormat const kNaoFormat = {
    {"v5DebugNAO", "/", "*.nao"},
    {P::getScriptPattern, P::getChartNamePattern, P::getNextPattern, P::getCopyrightPattern, P::getTrademarkPattern,
     P::getOnActionPattern, P::getContextPattern, P::getIdPattern, P::getNamePattern, P::getCoordPattern}};
MoDiffTextFormat const kLayoutDataXmlFormat = {
    {"v5DebugDataXml", "/DataXML/", "*.xml"}, {P::getCoordLDXPattern}};
MoDiffTextFormat const kPagedLayoutDataXmlFormat = {
    {"v5DebugPagedDataXml", "/PagedDataXML/", "*.xml"}, {P::getCoordLDXPattern}};
MoDiffTextFormat const kRawXmlFormat = {
    {"v5DebugRawXml", "/RawXML/", "*.xml"}, {P::getCoordPattern}};
MoDiffTextFormat const kMhtFormat = {
    {"v5DebugMHT", "/", "*.mht"},
    {P::getMhtLineTerminatorPattern, P::getNewlinePattern, P::getChartAreaHTMLPattern, P::getChartImagePngPattern,
     P::getScriptPattern, P::getMhtPattern, P::getImageDirectoryPattern, P::getCopyrightPattern,
     P::getTrademarkPattern}};
MoDiffTextFormat const kHtmlFormat = {
    {"v5DebugHTML", "/", "*.html"},
    {P::getNewlinePattern, P::getChartAreaHTMLPattern, P::getScriptPattern, P::getChartNamePattern,
     P::getNextPattern, P::getCopyrightPattern, P::getTrademarkPattern, P::getOnActionPattern,
     P::getPromptingIdPattern, P::getCoordPattern}};
MoDiffTextFormat const kXhtmlFormat = {
    {"v5DebugXHTML", "/", "*.xml"},
    {P::getScriptPattern, P::getChartNamePattern, P::getCoordPattern}};
MoDiffTextFormat const kXmlFormat = {
    {"v5DebugXML", "/XML/", "*.xml"}, {}};
MoDiffTextFormat const kXlsFormat = {
    {"v5DebugXLS", "/XLS/", "*.html"},
    {P::getExponentialFloatingPattern, P::getExcelDataPattern, P::getExcelChartWidthPattern, P::getScriptPattern,
     P::getImageDirectoryPattern}};
MoDiffTextFormat const kXlwaFormat = {
    {"v5DebugXLWA", "/XLWA/", "*.mht"},
    {P::getNewlinePattern, P::getExponentialFloatingPattern, P::getExcelDataPattern, P::getExcelChartWidthPattern,
     P::getScriptPattern, P::getImageDirectoryPattern}};

MoDiffTwoPassFormat const kSingleXlsFormat = {
    {"v5DebugSingleXLS", "/singleXLS/", "*.html"},
    {P::getScriptPattern, P::getImageDirectoryPattern, P::getExcelChartWidthPattern},
    {P::getExcelDataPattern, P::getExponentialFloatingPattern}};

MoDiffPatternGetter const kTvdPatterns[] = {
    P::getFloatingPointPattern, P::getExponentialFloatingPattern, P::getChartTempNamePattern,
    P::getTvdReferencePattern, P::getBinBindPattern, nullptr};

MoDiffFormat const kCsvFormat = {"v5DebugCSV", "/CSV/", "*.csv"};
MoDiffFormat const kCsiFormat = {"v5DebugROM", "/", "*.csi"};

MoDiffToolFormat const kXlsxFormat = {
    {"v5DebugXLS2007", "/XLS2007/", "*.xlsx"},
    "python ../../src/kavu/Builds/tools/DiffXlsx/DiffXlsx.py -o DiffXlsx.qpr \""};
MoDiffToolFormat const kPdfFormat = {
    {"v5DebugPDF", "/PDF/", "*.pdf"},
    "python ../../src/kavu/Builds/tools/diffpdf/diffPdfFiles.py \""};
MoDiffToolFormat const kVmdFormat = {
    {"v5DebugVMD", "/vmd/", "*.vmd"},
    "python ../../src/kavu/Builds/tools/diffvmd/diffvmd.py \""};

// clang-format on

std::list<MoDiffNormalizationPattern const*> patternsOf(MoDiffPatternGetter const* getters) {
    std::list<MoDiffNormalizationPattern const*> patterns;
    for (; *getters; ++getters)
        patterns.push_back(&(*getters)());
    return patterns;
}

std::string MoDiffFormat::masterGlob(MoDiffFileEngine const& engine, std::string const& actualFile) const {
    return engine.getMasterFileDirectory(actualFile) + masterFolder + engine.getReportName(actualFile) + masterSuffix;
}

MoDiffResult* MoDiffToolFormat::performDiff(MoDiffFileEngine const& engine, std::string const& masterFile,
                                            std::string const& actualFile) const {
    if (!engine.doesFileExist(masterFile))
        return new MoDiffResultFailFileMissing(masterFile, actualFile, masterFile);
    if (!engine.doesFileExist(actualFile))
        return new MoDiffResultFailFileMissing(masterFile, actualFile, actualFile);
    std::string const line = command + quotedContent(masterFile) + "\" \"" + quotedContent(actualFile) + "\"";
    MoDiffScriptRunner* const runner = MoDiffScriptRunner::get();
    if ((runner ? runner->run(line.c_str(), masterFile, actualFile) : std::system(line.c_str())) == 0)
        return new MoDiffResultPass(masterFile, actualFile);
    return new MoDiffResultFailDiff(masterFile, actualFile);
}
