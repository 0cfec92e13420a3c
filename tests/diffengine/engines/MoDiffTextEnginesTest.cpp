#include "MoRecordingListener.h"
#include "MoTestTree.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <stdexcept>

namespace {

/// Two texts for each pattern that agree only when it is applied, under its getter's name, and some that agree
/// only when patterns are applied in a certain order.
// clang-format off
std::map<std::string, std::pair<std::string, std::string>> const kPairs = {
    {"CR", {"a\r\nb", "a\nb"}}, {"Script", {"<script>1\n</script>", "<script>2\n</script>"}},
    {"ChartName", {R"(<i;name="chart-1">)", R"(<i;name="chart-2">)"}}, {"Id", {R"(<i id="a">)", R"(<i id="b">)"}},
    {"Next", {R"(<i;name="next-1" id="next-1">)", R"(<i;name="next-2" id="next-2">)"}}, {"Newline", {"a\nb", "ab"}},
    {"Copyright", {R"(<meta name="Copyright" x="1">)", R"(<meta name="Copyright" x="2">)"}}, {"Unlike", {"x1", "x2"}},
    {"Trademark", {R"(<meta name="Trademark" x="1">)", R"(<meta name="Trademark" x="2">)"}},
    {"OnAction", {R"(<i onclick="1">)", R"(<i onclick="2">)"}}, {"Context", {R"(<i ctx="1">)", R"(<i ctx="2">)"}},
    {"ImageDirectory", {R"(<img src="1bin/x)", R"(<img src="2bin/x)"}}, {"TvdChart", {"chart_tmp_1", "chart_tmp_2"}},
    {"Name", {R"(<i name="a">)", R"(<i name="b">)"}}, {"PromptingId", {R"(<i id="PRMT_1">)", R"(<i id="PRMT_2">)"}},
    {"TvdReference", {"c1.removeReference", "c2.removeReference"}}, {"BinBind", {"a/bin/b", "a\\bind\\b"}},
    {"Coord", {R"(<i coords="1">)", R"(<i coords="2">)"}}, {"CoordLDX", {"<coord>1</coord>", "<coord>2</coord>"}},
    {"Mht", {R"(name=3D"chart1")", R"(name=3D"chart2")"}}, {"ExponentialFloating", {"1e+05", "2e-06"}},
    {"ExcelData", {"<x:Data>1</x:Data>", "<x:Data>2</x:Data>"}}, {"FloatingPoint", {"1.5", "2.5"}},
    {"ChartTempName", {R"("chart_tmp_1")", R"("chart_tmp_2")"}}, {"ChartAreaHTML", {"<area 1>", "<area 2>"}},
    {"ChartAreaXML", {"<area>1</area>", "<area>2</area>"}}, {"MhtLineTerminator", {"a=\nb", "ab"}},
    {"ChartImagePng", {"Content-Type: image/png 1", "Content-Type: image/png 2"}},
    {"ExcelChartWidth", {"width:1px;", "width:2px;"}}, {"NewlineBeforeArea", {"<area\n1>", "<area\n2>"}},
    {"NewlineBeforeData", {"<x:Data>\n1</x:Data>", "<x:Data>\n2</x:Data>"}},
    {"DataBeforeWidth", {"width:1<x:Data></x:Data>px;", "width:2<x:Data></x:Data>px;"}},
    {"ScriptBeforeData", {"<x:Data>1<script>\n</script></x:Data>", "<x:Data>2<script>\n</script></x:Data>"}},
    {"ExponentBeforeData", {"<x:D1e+1ata>1</x:Data>", "<x:D1e+1ata>2</x:Data>"}},
    {"DataBeforeExponent", {"1e+<x:Data></x:Data>1", "2e+<x:Data></x:Data>1"}}};
// clang-format on

struct Row {
    std::function<MoDiffFileEngine*(char const* subDirectory)> make;
    char const *typeName, *folder, *suffix; // of the masters
    char const* difference;                 // how a difference is reported
    char const* agreeing;                   // the pairs that pass
};

template<typename Engine>
MoDiffFileEngine* make(char const* subDirectory) {
    return new Engine(subDirectory);
}

// clang-format off
Row const kRows[] = {
    {make<MoDiffNaoFileEngine>, "v5DebugNAO", "", "*.nao", "normalized",
     "CR Script ChartName Next Copyright Trademark OnAction Context Id PromptingId Name Coord"},
    {make<MoDiffLayoutDataXmlFileEngine>, "v5DebugDataXml", "DataXML/", "*.xml", "normalized", "CR CoordLDX"},
    {make<MoDiffPagedLayoutDataXmlFileEngine>, "v5DebugPagedDataXml", "PagedDataXML/", "*.xml", "normalized",
     "CR CoordLDX"},
    {make<MoDiffRawXmlFileEngine>, "v5DebugRawXml", "RawXML/", "*.xml", "normalized", "CR Coord"},
    {make<MoDiffMhtFileEngine>, "v5DebugMHT", "", "*.mht", "normalized", "CR MhtLineTerminator Newline ChartAreaHTML "
     "ChartImagePng Script Mht ImageDirectory Copyright Trademark NewlineBeforeArea"},
    {make<MoDiffHtmlFileEngine>, "v5DebugHTML", "", "*.html", "normalized",
     "CR Newline ChartAreaHTML Script ChartName Next Copyright Trademark OnAction PromptingId Coord "
     "NewlineBeforeArea"},
    {make<MoDiffXhtmlFileEngine>, "v5DebugXHTML", "", "*.xml", "normalized", "CR Script ChartName Coord"},
    {make<MoDiffXmlFileEngine>, "v5DebugXML", "XML/", "*.xml", "diff", "CR"},
    {make<MoDiffXlsFileEngine>, "v5DebugXLS", "XLS/", "*.html", "normalized", "CR ExponentialFloating ExcelData "
     "ExcelChartWidth Script ImageDirectory DataBeforeWidth ExponentBeforeData"},
    {make<MoDiffXlwaFileEngine>, "v5DebugXLWA", "XLWA/", "*.mht", "normalized", "CR Newline ExponentialFloating "
     "ExcelData ExcelChartWidth Script ImageDirectory DataBeforeWidth ExponentBeforeData NewlineBeforeData "
     "ScriptBeforeData"},
    {make<MoDiffSingleXlsFileEngine>, "v5DebugSingleXLS", "singleXLS/", "*.html", "normalized", "CR Script "
     "ImageDirectory ExcelChartWidth ExcelData ExponentialFloating ScriptBeforeData DataBeforeExponent"},
    {make<MoDiffCsvFileEngine>, "v5DebugCSV", "CSV/", "*.csv", "diff", ""},
    {make<MoDiffCsiFileEngine>, "v5DebugROM", "", "*.csi", "diff", "CR"},
    {[](char const* s) { return new MoDiffTvdFileEngine(s, "v5Tvd", "charts", "en"); }, "v5Tvd", "charts/",
     "*_en.tvd", "normalized", "CR FloatingPoint ExponentialFloating ChartTempName TvdReference BinBind"},
    {[](char const* s) { return new MoDiffTvdFileEngine(s, "v5T", nullptr, ""); }, "v5T", "", "*.tvd", nullptr, ""},
    {[](char const* s) { return new MoDiffPrpFileEngine(s, "v5Prp", "props"); }, "v5Prp", "props/", "*.prp",
     "diff", "CR"},
    {[](char const* s) { return new MoDiffPrpFileEngine(s, "v5P", ""); }, "v5P", "", "*.prp", nullptr, ""},
    {make<MoDiffXlsxFileEngine>, "v5DebugXLS2007", "XLS2007/", "*.xlsx", nullptr, ""}, // compared by scripts
    {make<MoDiffPdfFileEngine>, "v5DebugPDF", "PDF/", "*.pdf", nullptr, ""},
    {make<MoDiffVmdFileEngine>, "v5DebugVMD", "vmd/", "*.vmd", nullptr, ""}};
// clang-format on

TEST(FormatEngines, name_their_output_directory_and_their_masters) {
    for (Row const& row : kRows) {
        std::unique_ptr<MoDiffFileEngine> const plain(row.make(nullptr)), below(row.make("en"));
        EXPECT_EQ(row.typeName, plain->getOutputDirectoryTypeName());
        EXPECT_EQ("../webcontent/" + std::string(row.typeName) + "/en", below->getOutputDirectory());
        std::string const actual = "out/Sales.v2.any", glob = std::string(row.folder) + "Sales.v2" + row.suffix;
        EXPECT_EQ("out/Masters/" + glob, plain->getMasterFileGlobExpression(actual));
        EXPECT_EQ("out/Masters/en/" + glob, below->getMasterFileGlobExpression(actual));
    }
}

TEST(FormatEngines, disregard_what_their_patterns_delete_in_their_order_and_nothing_else) {
    MoTestTree const tree;
    for (auto const& [name, texts] : kPairs) {
        MoTestTree::write("m", texts.first);
        MoTestTree::write("a", texts.second);
        for (Row const& row : kRows) {
            if (!row.difference)
                continue;
            std::unique_ptr<MoDiffFileEngine> const engine(row.make(nullptr));
            std::string const outcome = outcomeOf(engine->performDiff("m", "a"));
            std::string const swapped = outcomeOf(engine->performDiff("a", "m"));
            bool const agrees = (" " + std::string(row.agreeing) + " ").find(" " + name + " ") != std::string::npos;
            EXPECT_EQ(agrees ? "pass" : row.difference, outcome.substr(0, outcome.find(' '))) << row.typeName << name;
            EXPECT_EQ(outcome.substr(0, outcome.find('[')), swapped.substr(0, swapped.find('['))) << row.typeName;
            EXPECT_EQ("missing m/", outcomeOf(engine->performDiff("m/", "a/"))) << row.typeName;
            EXPECT_EQ("missing a/", outcomeOf(engine->performDiff("m", "a/"))) << row.typeName;
        }
    }
}

TEST(FormatEngines, take_further_patterns_and_require_a_type_name) {
    MoTestTree const tree;
    MoTestTree::write("m", "<coord>1</coord> id=\"a\"");
    MoTestTree::write("a", "<coord>2</coord> id=\"b\"");
    MoDiffLayoutDataXmlFileEngine engine("");
    EXPECT_EQ("normalized 5 [ id=\"a\"][ id=\"b\"]", outcomeOf(engine.performDiff("m", "a")));
    engine.addCleansingPattern(MoDiffNormalizationPatterns::getIdPattern());
    EXPECT_EQ("pass", outcomeOf(engine.performDiff("m", "a")));
    EXPECT_THROW(MoDiffTvdFileEngine("s", nullptr, "m", "x"), std::logic_error);
    EXPECT_THROW(MoDiffPrpFileEngine("s", nullptr, "m"), std::logic_error);
}

} // namespace
