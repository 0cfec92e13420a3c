#ifndef MO_DIFF_RESULT_FAIL_H
#define MO_DIFF_RESULT_FAIL_H

#include "MoDiffResult.h"

/// The comparison failed; the subclasses say how.
class KLT_EXPORT MoDiffResultFail : public MoDiffResult {
public:
    MoDiffResultFail(std::string const& masterName, std::string const& actualName);

    void notifyListener(MoDiffListener& listener) const override;
    bool isPassed() const override { return false; }
};

#endif
