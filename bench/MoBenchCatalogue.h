#ifndef MO_BENCH_CATALOGUE_H
#define MO_BENCH_CATALOGUE_H

#include "MoBenchCorpus.h"
#include "MoBenchTask.h"
#include "MoDiffNormalizationPatterns.h"

#include <string>
#include <vector>

/// A pattern of the library beside its expression, so that others can run the same.
struct MoBenchPattern {
    char const* name;
    MoDiffNormalizationPattern const& (*getter)();
    std::string expression;
};

/// An engine's patterns in the order in which it applies them, and the reports it applies them to.
struct MoBenchList {
    char const* name;
    MoBenchCorpus::Kind corpus;
    std::vector<unsigned> patterns; ///< numbers in MoBenchCatalogue::patterns(), from 1
};

/// The pattern catalogue and the engines' lists, written out independently of the library's own.
class MoBenchCatalogue {
public:
    /// All patterns; number 1 comes first.
    static std::vector<MoBenchPattern> const& patterns();
    static std::vector<MoBenchList> const& lists();
    /// The list with this name. Raises std::invalid_argument for any other name.
    static MoBenchList const& listOf(std::string const& name);
    /// These patterns, in this order, over a text.
    static MoBenchTask makeTask(std::vector<unsigned> const& patterns, std::string text);
};

#endif
