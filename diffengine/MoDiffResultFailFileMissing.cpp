#include "MoDiffResultFailFileMissing.h"

#include "MoDiffListener.h"

MoDiffResultFailFileMissing::MoDiffResultFailFileMissing(std::string const& masterName, std::string const& actualName,
                                                         std::string const& missingFile)
    : MoDiffResultFail(masterName, actualName), m_missingFile(missingFile) {
}

void MoDiffResultFailFileMissing::notifyListener(MoDiffListener& listener) const {
    listener.comparisonNotification(*this);
}
