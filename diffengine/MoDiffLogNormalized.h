#ifndef MO_DIFF_LOG_NORMALIZED_H
#define MO_DIFF_LOG_NORMALIZED_H

#include "MoDiffListener.h"

#include <string>

/// Writes the two texts of every difference after normalization beside the actual file, for inspection: its name +
/// ".normalized_master" and + ".normalized_actual". Files of an earlier run are replaced; one that cannot be written
/// is skipped. Used from one thread at a time.
class KLT_EXPORT MoDiffLogNormalized : public MoDiffListener {
public:
    MoDiffLogNormalized();
    ~MoDiffLogNormalized() override;

    using MoDiffListener::comparisonNotification;
    void comparisonNotification(MoDiffResultFailDiffNormalized const& result) override;

    /// Writes a NUL-terminated text, byte for byte, into the file named fileName + suffix.
    void writeNormalizedFile(std::string const& fileName, char const* suffix, char const* text);
};

#endif
