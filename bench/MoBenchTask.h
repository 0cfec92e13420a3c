#ifndef MO_BENCH_TASK_H
#define MO_BENCH_TASK_H

#include <benchmark/benchmark.h>
#include <string>
#include <vector>

class MoDiffNormalizationPattern;

/// A text and what deletes its matches: the library's patterns and the same as expressions.
struct MoBenchTask {
    std::string text;
    std::vector<MoDiffNormalizationPattern const*> patterns;
    std::vector<std::string> expressions;

    /// What the library makes of the text.
    std::string cleansedByLibrary() const;
    std::string cleansedByWholeText() const;
    std::string cleansedByRe2() const;

    // Each of these is a benchmark's body. A run whose bytes are not the library's fails.
    void runLibrary(benchmark::State& state) const;
    void runWholeText(benchmark::State& state) const;
    void runRe2(benchmark::State& state) const;

private:
    template<typename Cleanse>
    void run(benchmark::State& state, Cleanse cleanse) const;
};

#endif
