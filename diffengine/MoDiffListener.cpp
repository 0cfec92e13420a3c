#include "MoDiffListener.h"

MoDiffListener::~MoDiffListener() = default;

void MoDiffListener::comparisonNotification(MoDiffResult const&) {
}

void MoDiffListener::comparisonNotification(MoDiffResultPass const& result) {
    comparisonNotification(static_cast<MoDiffResult const&>(result));
}

void MoDiffListener::comparisonNotification(MoDiffResultFail const& result) {
    comparisonNotification(static_cast<MoDiffResult const&>(result));
}

void MoDiffListener::comparisonNotification(MoDiffResultFailDiff const& result) {
    comparisonNotification(static_cast<MoDiffResultFail const&>(result));
}

void MoDiffListener::comparisonNotification(MoDiffResultFailDiffNormalized const& result) {
    comparisonNotification(static_cast<MoDiffResultFailDiff const&>(result));
}

void MoDiffListener::comparisonNotification(MoDiffResultFailFileMissing const& result) {
    comparisonNotification(static_cast<MoDiffResultFail const&>(result));
}
