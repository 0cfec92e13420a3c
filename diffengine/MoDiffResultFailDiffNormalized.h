#ifndef MO_DIFF_RESULT_FAIL_DIFF_NORMALIZED_H
#define MO_DIFF_RESULT_FAIL_DIFF_NORMALIZED_H

#include "MoDiffResultFailDiff.h"

#include <memory>

/// The contents differ after normalization. Owns the two normalized texts.
class KLT_EXPORT MoDiffResultFailDiffNormalized : public MoDiffResultFailDiff {
public:
    /// Takes over both texts, which were allocated with new[] and may be null.
    /// @param diffPosition the byte index at which the texts first differ: at most the shorter one's length
    MoDiffResultFailDiffNormalized(std::string const& masterName, std::string const& actualName,
                                   char* normalizedMaster, char* normalizedActual, long diffPosition);
    MoDiffResultFailDiffNormalized(MoDiffResultFailDiffNormalized const&) = delete;

    void notifyListener(MoDiffListener& listener) const override;

    /// NUL-terminated texts, owned by this object.
    char const* getNormalizedMaster() const { return m_normalizedMaster.get(); }
    char const* getNormalizedActual() const { return m_normalizedActual.get(); }
    long getDiffPosition() const { return m_diffPosition; }

private:
    std::unique_ptr<char[]> m_normalizedMaster;
    std::unique_ptr<char[]> m_normalizedActual;
    long m_diffPosition;
};

#endif
