#ifndef MO_OUTPUT_FORMAT_H
#define MO_OUTPUT_FORMAT_H

/// The output formats of the report server. The registry uses them as keys and attaches no meaning to them.
enum MoOutputFormat {
    eFormatHtml,
    eFormatMht,
    eFormatXhtml,
    eFormatXml,
    eFormatDataXml,
    eFormatPagedDataXml,
    eFormatRawXml,
    eFormatNao,
    eFormatXls,
    eFormatXlwa,
    eFormatSingleXls,
    eFormatCsv,
    eFormatCsi,
    eFormatTvd,
    eFormatPrp,
    eFormatXlsx,
    eFormatPdf,
    eFormatVmd
};

#endif
