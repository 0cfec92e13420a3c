#ifndef MO_DIFF_ENGINE_PATTERNS_H
#define MO_DIFF_ENGINE_PATTERNS_H

#include "MoDiffFormatTable.h"
#include "MoDiffLib.h"

namespace MoDiffEnginePatterns {

/// What the engine of a format deletes before it compares, in its order; nothing for formats that are not cleansed.
MoDiffLib::Patterns of(MoDiffFormatRow const& format, MoDiffEngineSettings const& settings);

} // namespace MoDiffEnginePatterns

#endif
