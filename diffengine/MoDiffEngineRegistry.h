#ifndef MO_DIFF_ENGINE_REGISTRY_H
#define MO_DIFF_ENGINE_REGISTRY_H

#include "MoDiffEngine.h"
#include "MoOutputFormat.h"

#include <map>
#include <set>

/// The library's entry point: start here. Knows which engines verify which output format and who listens.
///
/// Owns neither engines nor listeners; both must outlive every verifyOutput() that can reach them. Used from one
/// thread at a time.
class KLT_EXPORT MoDiffEngineRegistry {
public:
    MoDiffEngineRegistry();
    virtual ~MoDiffEngineRegistry();

    /// Adds an engine after those already registered for the format; the same one may be added again.
    /// REQUIRES: engine is not null (not verified).
    void registerDiffEngine(MoOutputFormat format, MoDiffEngine* engine);

    /// Adds a listener; one that is there already stays there once. A null one makes the first result raise
    /// KLTAssertError.
    void addListener(MoDiffListener* listener);
    /// Removes a listener if it is there. A listener may do so while it is told a result, with itself or with others:
    /// who has been removed is told nothing more and may be destroyed.
    void removeListener(MoDiffListener* listener);

    /// Runs every engine registered for the format, in the order of registration; without one nothing happens.
    /// @param actualFileName the path of the produced report; its directory and base name lead to the masters
    /// An error raised by an engine passes through, and the engines after it are not run.
    void verifyOutput(MoOutputFormat format, char const* actualFileName);

private:
    std::multimap<MoOutputFormat, MoDiffEngine* const> m_engines;
    std::set<MoDiffListener*> m_listeners;
};

#endif
