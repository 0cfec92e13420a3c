#ifndef MO_BENCH_CATALOGUE_H
#define MO_BENCH_CATALOGUE_H

#include "MoBenchCorpus.h"
#include "MoBenchTask.h"
#include "MoCatalogue.h"

#include <string>
#include <vector>

/// An engine's patterns in the order in which it applies them, and the reports it applies them to.
struct MoBenchList {
    char const* name;
    MoBenchCorpus::Kind corpus;
    std::vector<unsigned> patterns; ///< numbers in MoCatalogue::rows(), from 1
};

/// The engines' lists, written out independently of the library's own.
class MoBenchCatalogue {
public:
    static std::vector<MoBenchList> const& lists();
    /// The list with this name. Raises std::invalid_argument for any other name.
    static MoBenchList const& listOf(std::string const& name);
    /// These patterns, in this order, over a text.
    static MoBenchTask makeTask(std::vector<unsigned> const& patterns, std::string text);
};

#endif
