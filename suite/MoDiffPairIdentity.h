#ifndef MO_DIFF_PAIR_IDENTITY_H
#define MO_DIFF_PAIR_IDENTITY_H

#include "MoDiffPairResult.h"
#include "MoDiffPlan.h"

namespace MoDiffPairIdentity {

/// A result that tells which pair it is of and what was known of it before it is compared.
inline MoDiffPairResult resultOf(MoDiffPair const& pair) {
    MoDiffPairResult result;
    result.id = pair.id;
    result.format = pair.setup->format->word;
    result.subDirectory = pair.setup->settings.subDirectory;
    result.master = pair.master;
    result.actual = pair.actual;
    result.warnings = pair.warnings;
    return result;
}

} // namespace MoDiffPairIdentity

#endif
