#include "MoDiffResultFailDiff.h"

#include "MoDiffListener.h"

MoDiffResultFailDiff::MoDiffResultFailDiff(std::string const& masterName, std::string const& actualName)
    : MoDiffResultFail(masterName, actualName) {
}

void MoDiffResultFailDiff::notifyListener(MoDiffListener& listener) const {
    listener.comparisonNotification(*this);
}
