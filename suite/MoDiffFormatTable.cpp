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

MoDiffFormatRow::Comparison const kCleansed = MoDiffFormatRow::eCleansedText;
MoDiffFormatRow::Comparison const kText = MoDiffFormatRow::eText;
MoDiffFormatRow::Comparison const kBytes = MoDiffFormatRow::eBytes;
MoDiffFormatRow::Comparison const kScript = MoDiffFormatRow::eScript;

} // namespace

std::vector<MoDiffFormatRow> const& MoDiffFormatTable::rows() {
    static std::vector<MoDiffFormatRow> const table = {
        {"html", eFormatHtml, kCleansed, plain<MoDiffHtmlFileEngine>, false, false, nullptr},
        {"mht", eFormatMht, kCleansed, plain<MoDiffMhtFileEngine>, false, false, nullptr},
        {"xhtml", eFormatXhtml, kCleansed, plain<MoDiffXhtmlFileEngine>, false, false, nullptr},
        {"xml", eFormatXml, kText, plain<MoDiffXmlFileEngine>, false, false, nullptr},
        {"dataxml", eFormatDataXml, kCleansed, plain<MoDiffLayoutDataXmlFileEngine>, false, false, nullptr},
        {"pageddataxml", eFormatPagedDataXml, kCleansed, plain<MoDiffPagedLayoutDataXmlFileEngine>, false, false,
         nullptr},
        {"rawxml", eFormatRawXml, kCleansed, plain<MoDiffRawXmlFileEngine>, false, false, nullptr},
        {"nao", eFormatNao, kCleansed, plain<MoDiffNaoFileEngine>, false, false, nullptr},
        {"xls", eFormatXls, kCleansed, plain<MoDiffXlsFileEngine>, false, false, nullptr},
        {"xlwa", eFormatXlwa, kCleansed, plain<MoDiffXlwaFileEngine>, false, false, nullptr},
        {"singlexls", eFormatSingleXls, kCleansed, plain<MoDiffSingleXlsFileEngine>, false, false, nullptr},
        {"csv", eFormatCsv, kBytes, plain<MoDiffCsvFileEngine>, false, false, nullptr},
        {"csi", eFormatCsi, kText, plain<MoDiffCsiFileEngine>, false, false, nullptr},
        {"tvd", eFormatTvd, kCleansed, chart, true, true, nullptr},
        {"prp", eFormatPrp, kText, property, true, false, nullptr},
        {"xlsx", eFormatXlsx, kScript, plain<MoDiffXlsxFileEngine>, false, false, &kXlsxTool},
        {"pdf", eFormatPdf, kScript, plain<MoDiffPdfFileEngine>, false, false, &kPdfTool},
        {"vmd", eFormatVmd, kScript, plain<MoDiffVmdFileEngine>, false, false, &kVmdTool},
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
