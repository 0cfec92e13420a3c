#ifndef MO_RECORDING_LISTENER_H
#define MO_RECORDING_LISTENER_H

#include "libMoDiffEngine.h"

#include <memory>
#include <string>
#include <vector>

/// Writes down every result: "pass", "fail", "diff", "normalized 3 [master text][actual text]", "missing a.html".
class MoRecordingListener : public MoDiffListener {
public:
    std::vector<std::string> outcomes;
    std::vector<std::string> names; ///< "master actual"

    void comparisonNotification(MoDiffResult const& result) override { add(result, "unknown class"); }
    void comparisonNotification(MoDiffResultPass const& result) override { add(result, "pass"); }
    void comparisonNotification(MoDiffResultFail const& result) override { add(result, "fail"); }
    void comparisonNotification(MoDiffResultFailDiff const& result) override { add(result, "diff"); }
    void comparisonNotification(MoDiffResultFailDiffNormalized const& result) override {
        add(result, "normalized " + std::to_string(result.getDiffPosition()) + " [" + result.getNormalizedMaster() +
                        "][" + result.getNormalizedActual() + "]");
    }
    void comparisonNotification(MoDiffResultFailFileMissing const& result) override {
        add(result, "missing " + result.getMissingFile());
    }

private:
    void add(MoDiffResult const& result, std::string const& outcome) {
        outcomes.push_back(outcome);
        names.push_back(result.getMasterName() + " " + result.getActualName());
    }
};

/// What a result says, in the listener's words; deletes the result.
inline std::string outcomeOf(MoDiffResult const* result) {
    std::unique_ptr<MoDiffResult const> const owned(result);
    MoRecordingListener listener;
    owned->notifyListener(listener);
    return listener.outcomes.at(0);
}

#endif
