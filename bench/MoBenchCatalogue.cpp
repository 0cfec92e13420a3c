#include "MoBenchCatalogue.h"

#include <stdexcept>
#include <utility>

namespace {

using P = MoDiffNormalizationPatterns;

/// The quoted-printable form of name="chart...", with soft line breaks anywhere.
std::string mhtExpression() {
    std::string expression = "(?s)\\b";
    for (char const character : std::string("name=3D\"chart"))
        expression.append(1, character).append("(=[\\r\\n]+)*?");
    return expression + ".*?\"";
}

} // namespace

std::vector<MoBenchPattern> const& MoBenchCatalogue::patterns() {
    static std::vector<MoBenchPattern> const table = {
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

std::vector<MoBenchList> const& MoBenchCatalogue::lists() {
    static std::vector<MoBenchList> const table = {
        {"HTML", MoBenchCorpus::eHtml, {25, 23, 1, 2, 3, 4, 5, 6, 10, 14}},
        {"MHT", MoBenchCorpus::eMht, {26, 25, 23, 24, 1, 16, 7, 4, 5}},
        {"XHTML", MoBenchCorpus::eXhtml, {1, 2, 14}},
        {"DataXml", MoBenchCorpus::eDataXml, {15}},
        {"RawXml", MoBenchCorpus::eRawXml, {14}},
        {"NAO", MoBenchCorpus::eNao, {1, 2, 3, 4, 5, 6, 8, 11, 9, 14}},
        {"XLS", MoBenchCorpus::eXls, {19, 18, 27, 1, 7}},
        {"XLWA", MoBenchCorpus::eXlwa, {25, 19, 18, 27, 1, 7}},
        {"SingleXLS-markup", MoBenchCorpus::eXls, {1, 7, 27}},
        {"SingleXLS-data", MoBenchCorpus::eXls, {18, 19}},
        {"TVD", MoBenchCorpus::eTvd, {20, 19, 21, 13, 17}},
    };
    return table;
}

MoBenchList const& MoBenchCatalogue::listOf(std::string const& name) {
    for (MoBenchList const& list : lists()) {
        if (name == list.name)
            return list;
    }
    throw std::invalid_argument("no such list: " + name);
}

MoBenchTask MoBenchCatalogue::makeTask(std::vector<unsigned> const& numbers, std::string text) {
    MoBenchTask task = {std::move(text), {}, {}};
    for (unsigned const number : numbers) {
        MoBenchPattern const& pattern = patterns()[number - 1];
        task.patterns.push_back(&pattern.getter());
        task.expressions.push_back(pattern.expression);
    }
    return task;
}
