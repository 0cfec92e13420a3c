#include "MoDiffEnginePatterns.h"

#include "MoDiffSingleXlsFileEngine.h"
#include "MoDiffTextFileTypeEngine.h"

#include <memory>

MoDiffLib::Patterns MoDiffEnginePatterns::of(MoDiffFormatRow const& format, MoDiffEngineSettings const& settings) {
    std::unique_ptr<MoDiffFileEngine> const engine = format.makeEngine(settings);
    if (auto const* const textEngine = dynamic_cast<MoDiffTextFileTypeEngine const*>(engine.get()))
        return textEngine->getCleansingPatterns();
    if (auto const* const spreadsheet = dynamic_cast<MoDiffSingleXlsFileEngine const*>(engine.get()))
        return spreadsheet->getCleansingPatterns();
    return {};
}
