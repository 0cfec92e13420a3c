#ifndef MO_DIFF_RESULT_FAIL_DIFF_H
#define MO_DIFF_RESULT_FAIL_DIFF_H

#include "MoDiffResultFail.h"

/// The contents of the files differ.
class KLT_EXPORT MoDiffResultFailDiff : public MoDiffResultFail {
public:
    MoDiffResultFailDiff(std::string const& masterName, std::string const& actualName);

    void notifyListener(MoDiffListener& listener) const override;
};

#endif
