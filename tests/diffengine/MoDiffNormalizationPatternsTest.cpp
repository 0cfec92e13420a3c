#include "MoDiffNormalizationPatterns.h"

#include <gtest/gtest.h>
#include <regex>
#include <vector>

namespace {

using P = MoDiffNormalizationPatterns;

std::string without(std::string const& marked, char const* expression) {
    return std::regex_replace(marked, std::regex(expression), "");
}

#define ROW(member, getter, ...)                                                                                     \
    {                                                                                                                \
        &P::m_##member##Pattern, P::get##getter##Pattern, {                                                          \
            __VA_ARGS__                                                                                              \
        }                                                                                                            \
    }

struct {
    MoDiffNormalizationPattern const* pattern;
    MoDiffNormalizationPattern const& (*getter)();
    std::vector<char const*> texts; // «...» must vanish, the rest must survive byte for byte
} const kRows[] = {
    // clang-format off
    ROW(script, Script, "a«<script>é\nb</script>»x</script>«<scripts\xE9</script>»b",
        "<Script></Script><script></SCRIPT>\n"),
    ROW(chartName, ChartName, R"(<i «name="chart_1 é"» x=""> -«name="chart"»")",
        "éname=\"chart1\" name=\"char\" name=\"chart\n\""),
    ROW(next, Next, R"(<a «name="next1" id="next2"» x> «name="next" c="" id="next"»)", "«name=\"next\"\nid=\"next\"»",
        R"(name="next"  id="next")", R"(name="next"id="next")", R"(name="next" id="prev")",
        R"(xname="next" id="next")"),
    ROW(copyright, Copyright, R"(«<meta name="Copyright" content="é">»<meta>>)",
        "<meta name=\"copyright\"><meta name=\"Copyright\"\n>"),
    ROW(trademark, Trademark, R"(«<meta name="Trademark" content="é">»<meta>>)",
        "<meta name=\"trademark\"><meta name=\"Trademark\"\n>"),
    ROW(onAction, OnAction, R"(«onclick="é"»x="" «onload=""» «onmousemove="1"» «onkeypress="2"» butt«ondblclick=""»)",
        "onmouseover=\"\" «oncontextmenu=\"x\"» onclick='x' onload =\"\" onClick=\"\" onload=\"\n\""),
    ROW(imageDirectory, ImageDirectory, R"(«<img src="a/bin/»b/bin/c.png">)",
        "<img src=\"a/\nbin/ <img  src=bin/ <img src=\"bind/"),
    ROW(context, Context, R"(<td« ctx="1:23:4"» x>« ctx=":"»)", " ctx=\"\" ctx=\"1a\" ctx='1'\tctx=\"1\""),
    ROW(name, Name, R"(<td« name="aZ_09"   »id="x"> « name="a"  »name="b")",
        " name=\"a-1\" name=\"\"\nname=\"a\"« name=\"a\" »\n"),
    ROW(promptingId, PromptingId, R"(<td« id="PRMT_aZ_0"  »x>)",
        " id=\"PRMT_\" id=\"prmt_a\" id=\"PRMT_a-b\" id=\"a\"\tid=\"PRMT_a\""),
    ROW(id, Id, R"(<td« id="aZ_09"  »class="x">« id="PRMT_1"»>)",
        " id=\"a-1\"> id=\"\" id=\"é\"\tid=\"a\"« id=\"a\" »\n"),
    ROW(tvdChart, TvdChart, R"(x«chart_tmp_12»x "«chart_tmp_0»" chart_tmp_x Chart_tmp_1 chart_tmp1)"),
    ROW(tvdReference, TvdReference,
        "a«c12.removeReference»() c«c1.removeReference»s c1xremoveReference c.removeReference"),
    ROW(coord, Coord, R"(<i «coords="1,2"»x=""> xcoords="1" coord="1" coords='1' ,«coords="é"»)", "coords=\"\n\""),
    ROW(coordLDX, CoordLDX, "«<coord>1é</coord>»</coord><coord>\n</coord><coords>1</coords>"),
    ROW(mht, Mht, "<i «n=\nam=\r\n\ne=3D\"cha=\nrt1=\né\"»x\" «name==\n\n3=\n=\rD=\n\"=\nch=\nart\"»",
        "name=\"chart1\" filename=3D\"chart1\" éname=3D\"chart\" name=3D\"cart\" name=3d\"chart\"",
        "na= \nme=3D\"chart\""),
    ROW(binBind, BinBind, R"(a«/bin/»b«\bind\»c«/bin\»/bins/ /BIN/ bin/«/bin/»bin/ /bindd/ /bi/)"),
    ROW(excelData, ExcelData, "«<x:Data>1é</x:Data>»</x:Data><x:Data>\n</x:Data><x:data>1</x:data>"),
    ROW(exponentialFloating, ExponentialFloating,
        "«1.5e+03» «-2E-7» 1.5e3 a«+.5e-1» 1.e+5 1.«2.3e+45». -«-1e-1»e+2 1e+x ٣e+1"),
    ROW(floatingPoint, FloatingPoint, "«1.5»e3 «-.5» «+1.5E+10» 7 7. «12.5». «1.2»«.3» «1.5»e+x -«-1.5» 1,5 1e+05"),
    ROW(chartTempName, ChartTempName, R"(a «"x" b "chart_tmp_1"» c)", "\"a\"\n«\"é/chart_tmp_20\"»",
        R"("chart_tmp_" chart_tmp_1)", R"("chart_tmp_1x" "Chart_tmp_1")"),
    ROW(chartAreaXML, ChartAreaXML, R"(«<area a="1">é</area>»</area>«<area/>b</area>»<area/>)",
        "<area>\n</area><Area></Area>"),
    ROW(chartAreaHTML, ChartAreaHTML, R"(«<area shape="é">»x>«<area>»)", "<area\n><Area></area>«<areas>»<area"),
    ROW(chartImagePng, ChartImagePng,
        "«Content-Type: image/png; name=\"é\"»\n«Content-Type: image/png \xE9»\xE2\x80\xA8z",
        "content-Type: image/png «Content-Type: image/png \xC2»\rz Content-Type:image/png"),
    ROW(newline, Newline, "a«\n»«\n»b\r«\n»\\n"),
    ROW(mhtLineTerminator, MhtLineTerminator, "a«=\n»b=c=«=\n»\n=\r\n= \n"),
    ROW(excelChartWidth, ExcelChartWidth,
        "a «width:12px;» width:12; width:px; «width:1[_`^\\];» width: 1px; width:1é; width:1p2;")};
// clang-format on

TEST(Catalogue, deletes_exactly_the_marked_text) {
    for (auto const& row : kRows) {
        EXPECT_EQ(row.pattern, &row.getter());
        for (char const* marked : row.texts) {
            std::string text = without(marked, "«|»");
            row.pattern->normalizeText(text.data());
            EXPECT_STREQ(without(marked, "«[\\s\\S]*?»").c_str(), text.c_str()) << marked;
        }
    }
}

} // namespace
