#include "MoDiffResultPass.h"

#include "MoDiffListener.h"

MoDiffResultPass::MoDiffResultPass(std::string const& masterName, std::string const& actualName)
    : MoDiffResult(masterName, actualName) {
}

void MoDiffResultPass::notifyListener(MoDiffListener& listener) const {
    listener.comparisonNotification(*this);
}
