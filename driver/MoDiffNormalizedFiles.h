#ifndef MO_DIFF_NORMALIZED_FILES_H
#define MO_DIFF_NORMALIZED_FILES_H

#include "MoDiffLogNormalized.h"

class MoDiffGuardedFiles;

/// Writes the normalized texts beside the actual file. Raises an error, unlike MoDiffLogNormalized, when that fails
/// or when another file would be overwritten.
class MoDiffNormalizedFiles : public MoDiffLogNormalized {
public:
    /// @param files kept; must outlive this object
    explicit MoDiffNormalizedFiles(MoDiffGuardedFiles const& files) : m_files(files) {}

    using MoDiffLogNormalized::comparisonNotification;
    void comparisonNotification(MoDiffResultFailDiffNormalized const& result) override;

private:
    MoDiffGuardedFiles const& m_files;
};

#endif
