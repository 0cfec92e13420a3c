// The diff for people on reports in lines: scattered changes, and texts that have only their words in common. The
// names are changes/size. Counters tell how many changes were found and how many of them are coarser than tokens.

#include "MoDiffMarkupSplitter.h"
#include "MoDiffTextDiff.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <random>
#include <string>

namespace {

std::string report(std::size_t bytes, unsigned seed) {
    static char const* const words[] = {"Sales", "Region", "north", "south", "tent", "the", "of", "quarter"};
    std::mt19937 random(seed);
    std::string text;
    while (text.size() < bytes) {
        text += "<tr class=\"r" + std::to_string(random() % 3) + "\">";
        for (int cell = 0; cell < 6; ++cell)
            text += "<td>" + (random() % 2 != 0 ? std::to_string(random() % 1000000) : words[random() % 8]) + "</td>";
        text += "</tr>\n";
    }
    return text;
}

void compare(benchmark::State& state, std::string const& master, std::string const& actual) {
    std::vector<MoDiffChange> changes;
    for (auto _ : state)
        changes = MoDiffTextDiff::find(master, actual, MoDiffMarkupSplitter());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(master.size() + actual.size()));
    state.counters["changes"] = static_cast<double>(changes.size());
    state.counters["coarse"] = static_cast<double>(std::count_if(
        changes.begin(), changes.end(), [](auto const& change) { return change.grain > MoDiffGrain::eTokens; }));
}

void BM_Scattered(benchmark::State& state) {
    std::string const master = report(static_cast<std::size_t>(state.range(1)), 1);
    std::string actual = master;
    std::mt19937 random(2);
    for (std::int64_t change = 0; change < state.range(0); ++change)
        actual[actual.find_first_of("0123456789", random() % (actual.size() - 1000))] = 'x';
    compare(state, master, actual);
}

void BM_Different(benchmark::State& state) {
    auto const size = static_cast<std::size_t>(state.range(0));
    compare(state, report(size, 1), report(size, 2));
}

} // namespace

BENCHMARK(BM_Scattered)
    ->Args({1000, 1'000'000})
    ->Args({1000, 64'000'000})
    ->Args({100'000, 64'000'000})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Different)->Arg(1'000'000)->Arg(8'000'000)->Arg(64'000'000)->Unit(benchmark::kMillisecond);
