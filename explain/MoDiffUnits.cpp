#include "MoDiffUnits.h"

#include <algorithm>
#include <array>
#include <limits>
#include <numeric>
#include <xxhash.h>

namespace {

/// Steps through the tokens of a part of a text.
class Walk {
public:
    Walk(std::string_view text, MoDiffSplitter const& splitter, MoDiffGrain grain, MoDiffRange range)
        : m_text(text.substr(0, range.end)), m_splitter(splitter), m_grain(grain), m_begin(range.begin),
          m_end(endOfUnit(m_begin)) {}

    bool isAtEnd() const { return m_begin == m_text.size(); }
    void next() {
        m_begin = m_end;
        m_end = endOfUnit(m_begin);
    }
    std::size_t begin() const { return m_begin; }
    std::size_t end() const { return m_end; }
    std::string_view unit() const { return m_text.substr(m_begin, m_end - m_begin); }

private:
    std::size_t endOfUnit(std::size_t begin) const {
        return begin == m_text.size() ? begin : m_splitter.unitEnd(m_text, begin, m_grain);
    }

    std::string_view m_text;
    MoDiffSplitter const& m_splitter;
    MoDiffGrain m_grain;
    std::size_t m_begin;
    std::size_t m_end;
};

std::size_t const kKept = 64; // tokens at either end, so that changes can be moved

std::uint32_t hashOf(std::string_view unit) {
    XXH64_hash_t const hash = XXH3_64bits(unit.data(), unit.size());
    return static_cast<std::uint32_t>(hash ^ hash >> 32);
}

std::size_t commonEnd(std::string_view first, std::string_view second) {
    auto const parting = std::mismatch(first.rbegin(), first.rend(), second.rbegin(), second.rend());
    return static_cast<std::size_t>(parting.first - first.rbegin());
}

} // namespace

MoDiffUnits::MoDiffUnits(std::string_view text, MoDiffSplitter const& splitter, MoDiffGrain grain, MoDiffRange range)
    : m_text(text), m_begin(range.begin) {
    std::size_t const units = count(text, splitter, grain, range);
    m_hashes.reserve(units);
    m_ends.reserve(units);
    for (Walk walk(text, splitter, grain, range); !walk.isAtEnd(); walk.next()) {
        m_hashes.push_back(hashOf(walk.unit()));
        m_ends.push_back(static_cast<std::uint32_t>(walk.end() - m_begin));
    }
}

std::size_t MoDiffUnits::count(std::string_view text, MoDiffSplitter const& splitter, MoDiffGrain grain,
                               MoDiffRange range) {
    if (range.size() > std::numeric_limits<std::uint32_t>::max())
        return std::numeric_limits<std::size_t>::max() / 2;
    std::size_t units = 0;
    for (Walk walk(text, splitter, grain, range); !walk.isAtEnd(); walk.next())
        ++units;
    return units;
}

void MoDiffUnits::trimEnds(MoDiffBothSides<std::string_view> const& texts, MoDiffSplitter const& splitter,
                           MoDiffBothSides<MoDiffRange>& ranges) {
    Walk master(texts.master, splitter, MoDiffGrain::eTokens, ranges.master);
    Walk actual(texts.actual, splitter, MoDiffGrain::eTokens, ranges.actual);
    std::array<std::size_t, kKept> lengths{}; // of the last tokens
    for (std::size_t count = 0; !master.isAtEnd() && !actual.isAtEnd() && master.unit() == actual.unit(); ++count) {
        lengths[count % kKept] = master.unit().size();
        master.next();
        actual.next();
    }
    std::size_t const kept = std::accumulate(lengths.begin(), lengths.end(), std::size_t{0});
    ranges.master.begin = master.begin() - kept;
    ranges.actual.begin = actual.begin() - kept;
    if (master.isAtEnd() && actual.isAtEnd()) { // equal
        ranges.master.begin = ranges.master.end;
        ranges.actual.begin = ranges.actual.end;
        return;
    }
    // The bytes at the ends that both have in common may begin inside a token: look for the first place in them
    // where tokens of both texts end.
    std::size_t const common = commonEnd(texts.master.substr(master.begin(), ranges.master.end - master.begin()),
                                         texts.actual.substr(actual.begin(), ranges.actual.end - actual.begin()));
    while (!master.isAtEnd() || !actual.isAtEnd()) {
        std::size_t const masterLeft = ranges.master.end - master.begin();
        std::size_t const actualLeft = ranges.actual.end - actual.begin();
        if (masterLeft == actualLeft && masterLeft <= common)
            break;
        (masterLeft > actualLeft ? master : actual).next();
    }
    for (std::size_t count = 0; count < kKept && !master.isAtEnd() && master.unit() == actual.unit(); ++count) {
        master.next();
        actual.next();
    }
    ranges.master.end = master.begin();
    ranges.actual.end = actual.begin();
}
