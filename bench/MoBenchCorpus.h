#ifndef MO_BENCH_CORPUS_H
#define MO_BENCH_CORPUS_H

#include <cstddef>
#include <string>

/// Texts that look like the report server's output, the same in every run.
class MoBenchCorpus {
public:
    enum Kind { eHtml, eNao, eMht, eXhtml, eDataXml, eRawXml, eXls, eXlwa, eTvd, eNumbers, eKindCount };

    /// Makes a text of this kind: valid UTF-8, line feeds as line ends, at least size bytes and at most one fragment
    /// more.
    static std::string make(Kind kind, std::size_t size);

    /// The kind with this name ("html", "nao" ...). Raises std::invalid_argument for any other name.
    static Kind kindOf(std::string const& name);
};

#endif
