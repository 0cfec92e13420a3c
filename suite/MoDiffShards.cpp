#include "MoDiffShards.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>

namespace {

/// Whole microseconds, so that sums do not depend on the machine.
using Microseconds = std::uint64_t;

/// The mean of some times.
struct Mean {
    Microseconds sum = 0;
    Microseconds count = 0;

    void add(Microseconds time) {
        sum += time;
        ++count;
    }
};

/// How long each pair takes, known or guessed.
class Durations {
public:
    Durations(MoDiffPlan const& plan, std::vector<std::size_t> const& pairs,
              std::unordered_map<std::string, double> const& timings)
        : m_plan(plan), m_timings(timings) {
        for (std::size_t const index : pairs) {
            auto const timing = timings.find(plan.pairs[index].id);
            if (timing == timings.end())
                continue;
            m_all.add(rounded(timing->second));
            m_formats[plan.pairs[index].setup->format].add(rounded(timing->second));
        }
    }

    Microseconds of(std::size_t index) const {
        MoDiffPair const& pair = m_plan.pairs[index];
        auto const timing = m_timings.find(pair.id);
        if (timing != m_timings.end())
            return rounded(timing->second);
        auto const format = m_formats.find(pair.setup->format);
        Mean const& mean = format == m_formats.end() ? m_all : format->second;
        return mean.count == 0 ? 1 : mean.sum / mean.count;
    }

private:
    static Microseconds rounded(double seconds) {
        double constexpr kLongest = 1e7; // what a damaged record may claim
        return static_cast<Microseconds>(std::llround(std::clamp(seconds, 0.0, kLongest) * 1e6));
    }

    MoDiffPlan const& m_plan;
    std::unordered_map<std::string, double> const& m_timings;
    std::map<MoDiffFormatRow const*, Mean> m_formats;
    Mean m_all;
};

std::vector<std::size_t> everyNth(std::vector<std::size_t> const& pairs, unsigned index, unsigned count) {
    std::vector<std::size_t> part;
    for (std::size_t place = index - 1; place < pairs.size(); place += count)
        part.push_back(pairs[place]);
    return part;
}

} // namespace

std::vector<std::size_t> MoDiffShards::part(MoDiffPlan const& plan, std::vector<std::size_t> const& pairs,
                                            unsigned index, unsigned count,
                                            std::unordered_map<std::string, double> const& timings) {
    if (timings.empty())
        return everyNth(pairs, index, count);
    Durations const durations(plan, pairs, timings);
    std::vector<std::pair<Microseconds, std::size_t>> slowestFirst;
    slowestFirst.reserve(pairs.size());
    for (std::size_t const pair : pairs)
        slowestFirst.emplace_back(durations.of(pair), pair);
    std::stable_sort(slowestFirst.begin(), slowestFirst.end(),
                     [](auto const& left, auto const& right) { return left.first > right.first; });
    std::vector<std::pair<Microseconds, unsigned>> heap; // what each shard has to do; the least busy one on top
    heap.reserve(count);
    for (unsigned shard = 1; shard <= count; ++shard)
        heap.emplace_back(0, shard);
    std::vector<std::size_t> part;
    for (auto const& [time, pair] : slowestFirst) {
        std::pop_heap(heap.begin(), heap.end(), std::greater<>());
        if (heap.back().second == index)
            part.push_back(pair);
        heap.back().first += std::max<Microseconds>(time, 1); // many pairs of no measurable time are work, too
        std::push_heap(heap.begin(), heap.end(), std::greater<>());
    }
    std::sort(part.begin(), part.end());
    return part;
}
