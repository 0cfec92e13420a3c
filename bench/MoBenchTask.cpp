#include "MoBenchTask.h"

#include "MoBenchRe2.h"
#include "MoBenchWholeText.h"
#include "MoDiffLib.h"
#include "MoDiffNormalizationPattern.h"

#include <cstdint>

std::string MoBenchTask::cleansedByLibrary() const {
    std::string result = text;
    for (MoDiffNormalizationPattern const* const pattern : patterns)
        pattern->normalizeText(result.data());
    return result.c_str();
}

std::string MoBenchTask::cleansedByWholeText() const {
    std::string result = text;
    MoBenchWholeText(expressions).cleanse(result.data());
    return result.c_str();
}

std::string MoBenchTask::cleansedByRe2() const {
    std::string result = text;
    MoBenchRe2(expressions).cleanse(result);
    return result;
}

/// Cleansing works in place, so that each round begins with a fresh copy, which is not measured.
template<typename Cleanse>
void MoBenchTask::run(benchmark::State& state, Cleanse cleanse) const {
    std::string work;
    for (auto _ : state) {
        state.PauseTiming();
        work = text;
        state.ResumeTiming();
        cleanse(work);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    if (work.c_str() != cleansedByLibrary())
        state.SkipWithError("the cleansed bytes differ");
}

void MoBenchTask::runLibrary(benchmark::State& state) const {
    MoDiffLib::Patterns const list(patterns.begin(), patterns.end());
    run(state, [&list](std::string& work) {
        char nothing[] = "";
        MoDiffLib::cleanse(work.data(), nothing, list);
    });
}

void MoBenchTask::runWholeText(benchmark::State& state) const {
    MoBenchWholeText const wholeText(expressions);
    run(state, [&wholeText](std::string& work) { wholeText.cleanse(work.data()); });
}

void MoBenchTask::runRe2(benchmark::State& state) const {
    MoBenchRe2 const re2(expressions);
    run(state, [&re2](std::string& work) { re2.cleanse(work); });
}
