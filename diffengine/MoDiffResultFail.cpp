#include "MoDiffResultFail.h"

#include "MoDiffListener.h"

MoDiffResultFail::MoDiffResultFail(std::string const& masterName, std::string const& actualName)
    : MoDiffResult(masterName, actualName) {
}

void MoDiffResultFail::notifyListener(MoDiffListener& listener) const {
    listener.comparisonNotification(*this);
}
