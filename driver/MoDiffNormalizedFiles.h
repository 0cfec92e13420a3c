#ifndef MO_DIFF_NORMALIZED_FILES_H
#define MO_DIFF_NORMALIZED_FILES_H

#include "MoDiffLogNormalized.h"

class MoDiffTrouble;

/// Writes the normalized texts beside the actual file and tells when that failed, about which MoDiffLogNormalized
/// says nothing.
class MoDiffNormalizedFiles : public MoDiffLogNormalized {
public:
    /// @param trouble kept; must outlive this object
    explicit MoDiffNormalizedFiles(MoDiffTrouble& trouble) : m_trouble(trouble) {}

    using MoDiffLogNormalized::comparisonNotification;
    void comparisonNotification(MoDiffResultFailDiffNormalized const& result) override;

private:
    void check(std::string const& fileName, char const* text);

    MoDiffTrouble& m_trouble;
};

#endif
