#include "MoDiffEngineRegistry.h"

MoDiffEngineRegistry::MoDiffEngineRegistry() = default;

MoDiffEngineRegistry::~MoDiffEngineRegistry() = default;

void MoDiffEngineRegistry::registerDiffEngine(MoOutputFormat format, MoDiffEngine* engine) {
    m_engines.emplace(format, engine);
}

void MoDiffEngineRegistry::addListener(MoDiffListener* listener) {
    m_listeners.insert(listener);
}

void MoDiffEngineRegistry::removeListener(MoDiffListener* listener) {
    m_listeners.erase(listener);
}

void MoDiffEngineRegistry::verifyOutput(MoOutputFormat format, char const* actualFileName) {
    auto const engines = m_engines.equal_range(format);
    for (auto entry = engines.first; entry != engines.second; ++entry)
        entry->second->verifyOutput(m_listeners, actualFileName);
}
