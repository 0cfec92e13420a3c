#ifndef MO_DIFF_RESULT_PASS_H
#define MO_DIFF_RESULT_PASS_H

#include "MoDiffResult.h"

/// The files agree.
class KLT_EXPORT MoDiffResultPass : public MoDiffResult {
public:
    MoDiffResultPass(std::string const& masterName, std::string const& actualName);

    void notifyListener(MoDiffListener& listener) const override;
    bool isPassed() const override { return true; }
};

#endif
