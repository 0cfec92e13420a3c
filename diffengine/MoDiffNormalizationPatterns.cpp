#include "MoDiffNormalizationPatterns.h"

#include <algorithm>
#include <iterator>

// A soft line break of quoted-printable text, which may stand between any two characters.
#define MO_SOFT_BREAKS R"((=[\r\n]+)*?)"

#define MO_DEFINE_PATTERN(member, getter, ...)                                                                       \
    MoDiffNormalizationPattern MoDiffNormalizationPatterns::member(__VA_ARGS__);                                     \
    MoDiffNormalizationPattern const& MoDiffNormalizationPatterns::getter() {                                        \
        return member;                                                                                               \
    }

// In one module, so that they are built in the order of their definition.
MO_DEFINE_PATTERN(m_scriptPattern, getScriptPattern, R"((?s)<script.*?</script>)")
MO_DEFINE_PATTERN(m_chartNamePattern, getChartNamePattern, R"(\bname="chart.*?")")
MO_DEFINE_PATTERN(m_nextPattern, getNextPattern, R"(\bname="next.*?"\sid="next.*?")")
MO_DEFINE_PATTERN(m_copyrightPattern, getCopyrightPattern, R"(<meta name="Copyright".*?>)")
MO_DEFINE_PATTERN(m_trademarkPattern, getTrademarkPattern, R"(<meta name="Trademark".*?>)")
MO_DEFINE_PATTERN(m_onActionPattern, getOnActionPattern,
                  R"(on(click|load|mousemove|keypress|dblclick|contextmenu)=".*?")")
MO_DEFINE_PATTERN(m_imageDirectoryPattern, getImageDirectoryPattern, R"(<img src=.*?bin/)")
MO_DEFINE_PATTERN(m_contextPattern, getContextPattern, R"( ctx="[0-9:]+")")
MO_DEFINE_PATTERN(m_namePattern, getNamePattern, R"( name="[a-zA-Z_0-9]+" *)")
MO_DEFINE_PATTERN(m_promptingIdPattern, getPromptingIdPattern, R"( id="PRMT_[A-Za-z_0-9]+" *)")
MO_DEFINE_PATTERN(m_idPattern, getIdPattern, R"( id="[A-Za-z_0-9]+" *)")
MO_DEFINE_PATTERN(m_tvdChartPattern, getTvdChartPattern, "chart_tmp_[0-9]+")
MO_DEFINE_PATTERN(m_tvdReferencePattern, getTvdReferencePattern, R"(c[0-9]+\.removeReference)")
MO_DEFINE_PATTERN(m_coordPattern, getCoordPattern, R"(\bcoords=".*?")")
MO_DEFINE_PATTERN(m_coordLDXPattern, getCoordLDXPattern, R"(<coord>.*?</coord>)")
MO_DEFINE_PATTERN(m_mhtPattern, getMhtPattern,
                  R"((?s)\bn)" MO_SOFT_BREAKS "a" MO_SOFT_BREAKS "m" MO_SOFT_BREAKS "e" MO_SOFT_BREAKS
                  "=" MO_SOFT_BREAKS "3" MO_SOFT_BREAKS "D" MO_SOFT_BREAKS R"(")" MO_SOFT_BREAKS "c" MO_SOFT_BREAKS
                  "h" MO_SOFT_BREAKS "a" MO_SOFT_BREAKS "r" MO_SOFT_BREAKS "t" MO_SOFT_BREAKS R"(.*?")")
MO_DEFINE_PATTERN(m_binBindPattern, getBinBindPattern, R"([\\/]bind?[\\/])")
MO_DEFINE_PATTERN(m_excelDataPattern, getExcelDataPattern, R"(<x:Data>.*?</x:Data>)")
MO_DEFINE_PATTERN(m_exponentialFloatingPattern, getExponentialFloatingPattern,
                  R"([-+]?[0-9]*\.?[0-9]+[eE][-+][0-9]+)")
MO_DEFINE_PATTERN(m_floatingPointPattern, getFloatingPointPattern, R"([-+]?[0-9]*\.[0-9]+([eE][-+][0-9]+)?)")
MO_DEFINE_PATTERN(m_chartTempNamePattern, getChartTempNamePattern, R"(".*?chart_tmp_[0-9]+")")
MO_DEFINE_PATTERN(m_chartAreaXMLPattern, getChartAreaXMLPattern, R"(<area.*?>.*?</area>)")
MO_DEFINE_PATTERN(m_chartAreaHTMLPattern, getChartAreaHTMLPattern, R"(<area.*?>)")
MO_DEFINE_PATTERN(m_chartImagePngPattern, getChartImagePngPattern, "Content-Type: image/png.*")
MO_DEFINE_PATTERN(m_newlinePattern, getNewlinePattern, "\n")
MO_DEFINE_PATTERN(m_mhtLineTerminatorPattern, getMhtLineTerminatorPattern, "=\n")
MO_DEFINE_PATTERN(m_excelChartWidthPattern, getExcelChartWidthPattern, "width:[0-9]+[a-zA-z]+;")

namespace {

struct Entry {
    MoDiffNormalizationPattern const& (*getter)();
    char const* name;
};

#define MO_ENTRY(name)                                                                                               \
    { MoDiffNormalizationPatterns::get##name##Pattern, #name }

Entry const kCatalogue[] = {MO_ENTRY(Script),
                            MO_ENTRY(ChartName),
                            MO_ENTRY(Next),
                            MO_ENTRY(Copyright),
                            MO_ENTRY(Trademark),
                            MO_ENTRY(OnAction),
                            MO_ENTRY(ImageDirectory),
                            MO_ENTRY(Context),
                            MO_ENTRY(Name),
                            MO_ENTRY(PromptingId),
                            MO_ENTRY(Id),
                            MO_ENTRY(TvdChart),
                            MO_ENTRY(TvdReference),
                            MO_ENTRY(Coord),
                            MO_ENTRY(CoordLDX),
                            MO_ENTRY(Mht),
                            MO_ENTRY(BinBind),
                            MO_ENTRY(ExcelData),
                            MO_ENTRY(ExponentialFloating),
                            MO_ENTRY(FloatingPoint),
                            MO_ENTRY(ChartTempName),
                            MO_ENTRY(ChartAreaXML),
                            MO_ENTRY(ChartAreaHTML),
                            MO_ENTRY(ChartImagePng),
                            MO_ENTRY(Newline),
                            MO_ENTRY(MhtLineTerminator),
                            MO_ENTRY(ExcelChartWidth)};

} // namespace

MoDiffNormalizationPatterns::MoDiffNormalizationPatterns() = default;

MoDiffNormalizationPatterns::~MoDiffNormalizationPatterns() = default;

char const* MoDiffNormalizationPatterns::nameOf(MoDiffNormalizationPattern const* pattern) {
    auto const isIt = [pattern](Entry const& entry) { return &entry.getter() == pattern; };
    auto const* const entry = std::find_if(std::begin(kCatalogue), std::end(kCatalogue), isIt);
    return entry == std::end(kCatalogue) ? "" : entry->name;
}

#undef MO_ENTRY
#undef MO_DEFINE_PATTERN
#undef MO_SOFT_BREAKS
