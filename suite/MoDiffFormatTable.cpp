#include "MoDiffFormatTable.h"

#include "libMoDiffEngine.h"

#include <algorithm>

namespace {

template<typename Engine>
std::unique_ptr<MoDiffFileEngine> plain(MoDiffEngineSettings const& settings) {
    return std::make_unique<Engine>(settings.subDirectory.c_str());
}

std::unique_ptr<MoDiffFileEngine> chart(MoDiffEngineSettings const& settings) {
    return std::make_unique<MoDiffTvdFileEngine>(settings.subDirectory.c_str(), settings.typeName.c_str(),
                                                 settings.masterSubDirectory.c_str(), settings.masterSuffix.c_str());
}

std::unique_ptr<MoDiffFileEngine> property(MoDiffEngineSettings const& settings) {
    return std::make_unique<MoDiffPrpFileEngine>(settings.subDirectory.c_str(), settings.typeName.c_str(),
                                                 settings.masterSubDirectory.c_str());
}

MoDiffTool const kXlsxTool = {"DiffXlsx/DiffXlsx.py", "openpyxl defusedxml", ""};
MoDiffTool const kPdfTool = {"diffpdf/diffPdfFiles.py", "PIL", "pdfinfo pdftotext pdftoppm"};
MoDiffTool const kVmdTool = {"diffvmd/diffvmd.py", "", ""};

MoDiffFormatRow rowOf(char const* word, MoOutputFormat format, MoDiffFormatRow::Comparison comparison,
                      MoDiffFormatRow::Factory makeEngine) {
    MoDiffFormatRow row = {};
    row.word = word;
    row.format = format;
    row.comparison = comparison;
    row.makeEngine = makeEngine;
    return row;
}

template<typename Engine>
MoDiffFormatRow cleansedRow(char const* word, MoOutputFormat format) {
    return rowOf(word, format, MoDiffFormatRow::eCleansedText, plain<Engine>);
}

template<typename Engine>
MoDiffFormatRow scriptRow(char const* word, MoOutputFormat format, MoDiffTool const& tool) {
    MoDiffFormatRow row = rowOf(word, format, MoDiffFormatRow::eScript, plain<Engine>);
    row.tool = &tool;
    return row;
}

MoDiffFormatRow chartRow() {
    MoDiffFormatRow row = rowOf("tvd", eFormatTvd, MoDiffFormatRow::eCleansedText, chart);
    row.takesDirectories = true;
    row.takesSuffix = true;
    return row;
}

MoDiffFormatRow propertyRow() {
    MoDiffFormatRow row = rowOf("prp", eFormatPrp, MoDiffFormatRow::eText, property);
    row.takesDirectories = true;
    return row;
}

} // namespace

std::vector<MoDiffFormatRow> const& MoDiffFormatTable::rows() {
    static std::vector<MoDiffFormatRow> const table = {
        cleansedRow<MoDiffHtmlFileEngine>("html", eFormatHtml),
        cleansedRow<MoDiffMhtFileEngine>("mht", eFormatMht),
        cleansedRow<MoDiffXhtmlFileEngine>("xhtml", eFormatXhtml),
        rowOf("xml", eFormatXml, MoDiffFormatRow::eText, plain<MoDiffXmlFileEngine>),
        cleansedRow<MoDiffLayoutDataXmlFileEngine>("dataxml", eFormatDataXml),
        cleansedRow<MoDiffPagedLayoutDataXmlFileEngine>("pageddataxml", eFormatPagedDataXml),
        cleansedRow<MoDiffRawXmlFileEngine>("rawxml", eFormatRawXml),
        cleansedRow<MoDiffNaoFileEngine>("nao", eFormatNao),
        cleansedRow<MoDiffXlsFileEngine>("xls", eFormatXls),
        cleansedRow<MoDiffXlwaFileEngine>("xlwa", eFormatXlwa),
        cleansedRow<MoDiffSingleXlsFileEngine>("singlexls", eFormatSingleXls),
        rowOf("csv", eFormatCsv, MoDiffFormatRow::eBytes, plain<MoDiffCsvFileEngine>),
        rowOf("csi", eFormatCsi, MoDiffFormatRow::eText, plain<MoDiffCsiFileEngine>),
        chartRow(),
        propertyRow(),
        scriptRow<MoDiffXlsxFileEngine>("xlsx", eFormatXlsx, kXlsxTool),
        scriptRow<MoDiffPdfFileEngine>("pdf", eFormatPdf, kPdfTool),
        scriptRow<MoDiffVmdFileEngine>("vmd", eFormatVmd, kVmdTool),
    };
    return table;
}

MoDiffFormatRow const* MoDiffFormatTable::find(std::string const& word) {
    auto const row = std::find_if(rows().begin(), rows().end(),
                                  [&word](MoDiffFormatRow const& candidate) { return candidate.word == word; });
    return row == rows().end() ? nullptr : &*row;
}

char const* MoDiffFormatTable::comparisonWords(MoDiffFormatRow const& row) {
    static char const* const words[] = {"text after cleansing", "text", "bytes", "script"};
    return words[row.comparison];
}

std::string MoDiffFormatTable::words() {
    std::string list;
    for (MoDiffFormatRow const& row : rows())
        list.append(list.empty() ? "" : ", ").append(row.word);
    return list;
}
