#ifndef MO_BENCH_DENSE_TEXTS_H
#define MO_BENCH_DENSE_TEXTS_H

#include "MoBenchTask.h"

#include <vector>

/// Texts in which a match could begin at nearly every character, 1 MB each.
struct MoBenchDenseTexts {
    struct Row {
        char const* list; ///< the list of patterns that deletes from it
        char const* name;
        MoBenchTask (*make)(char const* list);
    };
    static std::vector<Row> const& all();
};

#endif
