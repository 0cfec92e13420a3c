#include "MoDiffResultFailDiffNormalized.h"

#include "MoDiffListener.h"

MoDiffResultFailDiffNormalized::MoDiffResultFailDiffNormalized(std::string const& masterName,
                                                               std::string const& actualName, char* normalizedMaster,
                                                               char* normalizedActual, long diffPosition)
    : MoDiffResultFailDiff(masterName, actualName), m_normalizedMaster(normalizedMaster),
      m_normalizedActual(normalizedActual), m_diffPosition(diffPosition) {
}

void MoDiffResultFailDiffNormalized::notifyListener(MoDiffListener& listener) const {
    listener.comparisonNotification(*this);
}
