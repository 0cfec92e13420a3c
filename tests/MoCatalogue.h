#ifndef MO_CATALOGUE_H
#define MO_CATALOGUE_H

#include "MoDiffNormalizationPatterns.h"

#include <string>
#include <vector>

/// The catalogue of patterns once more, for tests and benchmarks: written out independently of the library.
namespace MoCatalogue {

struct Row {
    char const* name;
    MoDiffNormalizationPattern const& (*getter)();
    std::string expression;
};

/// The quoted-printable form of name="chart...", with soft line breaks anywhere.
inline std::string mhtExpression() {
    std::string expression = "(?s)\\b";
    for (char const character : std::string("name=3D\"chart"))
        expression.append(1, character).append("(=[\\r\\n]+)*?");
    return expression + ".*?\"";
}

/// All patterns; number 1 comes first.
inline std::vector<Row> const& rows() {
    using P = MoDiffNormalizationPatterns;
    static std::vector<Row> const table = {
        {"script", P::getScriptPattern, R"((?s)<script.*?</script>)"},
        {"chart name", P::getChartNamePattern, R"(\bname="chart.*?")"},
        {"next", P::getNextPattern, R"(\bname="next.*?"\sid="next.*?")"},
        {"copyright", P::getCopyrightPattern, R"(<meta name="Copyright".*?>)"},
        {"trademark", P::getTrademarkPattern, R"(<meta name="Trademark".*?>)"},
        {"on action", P::getOnActionPattern, R"(on(click|load|mousemove|keypress|dblclick|contextmenu)=".*?")"},
        {"image directory", P::getImageDirectoryPattern, R"(<img src=.*?bin/)"},
        {"context", P::getContextPattern, R"( ctx="[0-9:]+")"},
        {"name", P::getNamePattern, R"( name="[a-zA-Z_0-9]+" *)"},
        {"prompting id", P::getPromptingIdPattern, R"( id="PRMT_[A-Za-z_0-9]+" *)"},
        {"id", P::getIdPattern, R"( id="[A-Za-z_0-9]+" *)"},
        {"tvd chart", P::getTvdChartPattern, R"(chart_tmp_[0-9]+)"},
        {"tvd reference", P::getTvdReferencePattern, R"(c[0-9]+\.removeReference)"},
        {"coord", P::getCoordPattern, R"(\bcoords=".*?")"},
        {"coord LDX", P::getCoordLDXPattern, R"(<coord>.*?</coord>)"},
        {"mht", P::getMhtPattern, mhtExpression()},
        {"bin or bind", P::getBinBindPattern, R"([\\/]bind?[\\/])"},
        {"excel data", P::getExcelDataPattern, R"(<x:Data>.*?</x:Data>)"},
        {"exponential floating", P::getExponentialFloatingPattern, R"([-+]?[0-9]*\.?[0-9]+[eE][-+][0-9]+)"},
        {"floating point", P::getFloatingPointPattern, R"([-+]?[0-9]*\.[0-9]+([eE][-+][0-9]+)?)"},
        {"chart temp name", P::getChartTempNamePattern, R"(".*?chart_tmp_[0-9]+")"},
        {"chart area XML", P::getChartAreaXMLPattern, R"(<area.*?>.*?</area>)"},
        {"chart area HTML", P::getChartAreaHTMLPattern, R"(<area.*?>)"},
        {"chart image png", P::getChartImagePngPattern, R"(Content-Type: image/png.*)"},
        {"newline", P::getNewlinePattern, "\n"},
        {"mht line terminator", P::getMhtLineTerminatorPattern, "=\n"},
        {"excel chart width", P::getExcelChartWidthPattern, R"(width:[0-9]+[a-zA-z]+;)"},
    };
    return table;
}

} // namespace MoCatalogue

#endif
