#ifndef MO_DIFF_NORMALIZATION_PATTERNS_H
#define MO_DIFF_NORMALIZATION_PATTERNS_H

#include "MoDiffNormalizationPattern.h"

/// The patterns that remove what legitimately changes from one rendering of a report to the next.
///
/// The objects are built when the library is loaded, in this order, and live until it is unloaded. They are shared by
/// everything in the process: one pattern must not normalize two texts at the same time. Patterns expect single line
/// feeds as line ends (carriage returns are removed before they run).
class KLT_EXPORT MoDiffNormalizationPatterns {
public:
    MoDiffNormalizationPatterns();
    virtual ~MoDiffNormalizationPatterns();

    /// Deletes a script element, across lines.
    static MoDiffNormalizationPattern const& getScriptPattern();
    /// Deletes a name attribute whose value starts with "chart"; the blank before it stays.
    static MoDiffNormalizationPattern const& getChartNamePattern();
    /// Deletes a name and an id attribute whose values both start with "next".
    static MoDiffNormalizationPattern const& getNextPattern();
    /// Deletes the meta tag named Copyright.
    static MoDiffNormalizationPattern const& getCopyrightPattern();
    /// Deletes the meta tag named Trademark.
    static MoDiffNormalizationPattern const& getTrademarkPattern();
    /// Deletes the event-handler attributes; the blank before them stays.
    static MoDiffNormalizationPattern const& getOnActionPattern();
    /// Deletes the start of an image tag up to the first "bin/".
    static MoDiffNormalizationPattern const& getImageDirectoryPattern();
    /// Deletes a ctx attribute with the blank before it.
    static MoDiffNormalizationPattern const& getContextPattern();
    /// Deletes a name attribute with the blank before it and all blanks after it.
    static MoDiffNormalizationPattern const& getNamePattern();
    /// Deletes an id attribute starting with "PRMT_", blanks as for Name.
    static MoDiffNormalizationPattern const& getPromptingIdPattern();
    /// Deletes any id attribute, blanks as for Name.
    static MoDiffNormalizationPattern const& getIdPattern();
    /// Deletes a temporary chart name.
    static MoDiffNormalizationPattern const& getTvdChartPattern();
    /// Deletes the removal of a numbered reference.
    static MoDiffNormalizationPattern const& getTvdReferencePattern();
    /// Deletes a coords attribute.
    static MoDiffNormalizationPattern const& getCoordPattern();
    /// Deletes a coord element, within one line.
    static MoDiffNormalizationPattern const& getCoordLDXPattern();
    /// Deletes ChartName as quoted-printable text, which a soft line break may part anywhere.
    static MoDiffNormalizationPattern const& getMhtPattern();
    /// Deletes a directory step "bin" or "bind" with the separators around it.
    static MoDiffNormalizationPattern const& getBinBindPattern();
    /// Deletes a spreadsheet cell's data element, within one line.
    static MoDiffNormalizationPattern const& getExcelDataPattern();
    /// Deletes a number with a signed exponent.
    static MoDiffNormalizationPattern const& getExponentialFloatingPattern();
    /// Deletes a number with a decimal point.
    static MoDiffNormalizationPattern const& getFloatingPointPattern();
    /// Deletes quoted text that ends in a temporary chart name, within one line.
    static MoDiffNormalizationPattern const& getChartTempNamePattern();
    /// Deletes an area element, within one line.
    static MoDiffNormalizationPattern const& getChartAreaXMLPattern();
    /// Deletes an area tag.
    static MoDiffNormalizationPattern const& getChartAreaHTMLPattern();
    /// Deletes the header of a PNG image and the rest of its line.
    static MoDiffNormalizationPattern const& getChartImagePngPattern();
    /// Deletes every line feed.
    static MoDiffNormalizationPattern const& getNewlinePattern();
    /// Deletes a quoted-printable soft line break.
    static MoDiffNormalizationPattern const& getMhtLineTerminatorPattern();
    /// Deletes a width declaration with its unit.
    static MoDiffNormalizationPattern const& getExcelChartWidthPattern();

    /// The name that a pattern's getter holds between "get" and "Pattern", such as "Script"; empty for a pattern that
    /// is not in the catalogue, and for null. The text lives as long as the library is loaded.
    static char const* nameOf(MoDiffNormalizationPattern const* pattern);

    static MoDiffNormalizationPattern m_scriptPattern;
    static MoDiffNormalizationPattern m_chartNamePattern;
    static MoDiffNormalizationPattern m_nextPattern;
    static MoDiffNormalizationPattern m_copyrightPattern;
    static MoDiffNormalizationPattern m_trademarkPattern;
    static MoDiffNormalizationPattern m_onActionPattern;
    static MoDiffNormalizationPattern m_imageDirectoryPattern;
    static MoDiffNormalizationPattern m_contextPattern;
    static MoDiffNormalizationPattern m_namePattern;
    static MoDiffNormalizationPattern m_promptingIdPattern;
    static MoDiffNormalizationPattern m_idPattern;
    static MoDiffNormalizationPattern m_tvdChartPattern;
    static MoDiffNormalizationPattern m_tvdReferencePattern;
    static MoDiffNormalizationPattern m_coordPattern;
    static MoDiffNormalizationPattern m_coordLDXPattern;
    static MoDiffNormalizationPattern m_mhtPattern;
    static MoDiffNormalizationPattern m_binBindPattern;
    static MoDiffNormalizationPattern m_excelDataPattern;
    static MoDiffNormalizationPattern m_exponentialFloatingPattern;
    static MoDiffNormalizationPattern m_floatingPointPattern;
    static MoDiffNormalizationPattern m_chartTempNamePattern;
    static MoDiffNormalizationPattern m_chartAreaXMLPattern;
    static MoDiffNormalizationPattern m_chartAreaHTMLPattern;
    static MoDiffNormalizationPattern m_chartImagePngPattern;
    static MoDiffNormalizationPattern m_newlinePattern;
    static MoDiffNormalizationPattern m_mhtLineTerminatorPattern;
    static MoDiffNormalizationPattern m_excelChartWidthPattern;
};

#endif
