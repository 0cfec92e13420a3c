#include "MoDiffCandidateIndex.h"

#include "MoDiffCharacterFrequency.h"
#include "MoDiffSimd.h"

#include <algorithm>

namespace {

/// Pairs that are met more often, by what is known of reports, are not worth to be listed.
double const kMostFrequent = 10000; // in a million

/// So many bytes a hit there must be, or they are not worth to be listed; a few are let pass.
std::size_t const kBytesPerHit = 256;
std::size_t const kFewHits = 16;

std::string charactersOf(std::bitset<128> const& set) {
    std::string characters;
    for (std::size_t character = 0; character < set.size(); ++character)
        if (set[character])
            characters += static_cast<char>(character);
    return characters;
}

double pairFrequency(std::string const& first, std::string const& second) {
    double sum = 0;
    for (char const one : first)
        for (char const other : second)
            sum +=
                MoDiffCharacterFrequency::ofPair(static_cast<unsigned char>(one), static_cast<unsigned char>(other));
    return sum;
}

} // namespace

std::optional<MoDiffCandidateIndex::Pair> MoDiffCandidateIndex::choosePair(MoDiffProgram::Prefix const& prefix) {
    std::optional<Pair> best;
    double least = kMostFrequent;
    for (std::size_t offset = 0; offset + 1 < prefix.size(); ++offset) {
        Pair pair = {offset, charactersOf(prefix[offset]), charactersOf(prefix[offset + 1])};
        double const frequency = pairFrequency(pair.first, pair.second);
        if (frequency > least)
            continue;
        least = frequency; // of equals the last: the first characters are rather those of all tags and attributes
        best = std::move(pair);
    }
    return best;
}

void MoDiffCandidateIndex::Position::add(std::string const& characters, std::size_t pair) {
    auto const bucket = static_cast<std::uint8_t>(1U << pair % kBuckets);
    for (char const character : characters) {
        auto const byte = static_cast<unsigned char>(character);
        kinds[byte] = static_cast<Kinds>(kinds[byte] | 1U << pair);
        buckets[byte] |= bucket;
        low[byte & 15] |= bucket;
        high[byte >> 4] |= bucket;
    }
}

void MoDiffCandidateIndex::add(Pair const& pair) {
    m_first.add(pair.first, m_pairs);
    m_second.add(pair.second, m_pairs);
    m_offsets[m_pairs++] = pair.offset;
}

bool MoDiffCandidateIndex::build(Text text, Text end) {
    m_text = text;
    m_end = end;
    m_hits.reserve(static_cast<std::size_t>(end - text) / kBytesPerHit + kFewHits);
    Text rest = MoDiffWidest::isThere() ? addInBlocks(text, end) : addInSpans(text, end);
    for (; end - rest > 1 && !hasTooMany(rest); ++rest)
        addIfHit(rest);
    return end - rest <= 1;
}

/// Whether in the text up to a place there are more hits than it is worth.
bool MoDiffCandidateIndex::hasTooMany(Text place) const {
    return m_hits.size() > static_cast<std::size_t>(place - m_text) / kBytesPerHit + kFewHits;
}

void MoDiffCandidateIndex::addIfHit(Text place) {
    if (Kinds const kinds = kindsOf(place[0], place[1]))
        m_hits.push_back({static_cast<std::uint32_t>(place - m_text), kinds});
}

MoDiffCandidateIndex::Text MoDiffCandidateIndex::addInBlocks(Text text, Text end) {
    while (std::uint64_t hits = MoDiffWidest::findPairs(text, end, m_first.buckets, m_second.buckets)) {
        for (; hits != 0; hits &= hits - 1)
            addIfHit(text + __builtin_ctzll(hits));
        if (hasTooMany(text))
            break;
        text += MoDiffWidest::kBlock;
    }
    return text;
}

#ifdef MO_DIFF_HAS_LOOKUP

bool MoDiffCandidateIndex::isQuick() {
    return true;
}

/// Adds the hits of whole spans, until there are too many; returns where it stopped.
MoDiffCandidateIndex::Text MoDiffCandidateIndex::addInSpans(Text text, Text end) {
    using MoDiffSimd::kSpan;
    using MoDiffSimd::Span;
    Span const firstLow = MoDiffSimd::loadTable(m_first.low.data());
    Span const firstHigh = MoDiffSimd::loadTable(m_first.high.data());
    Span const secondLow = MoDiffSimd::loadTable(m_second.low.data());
    Span const secondHigh = MoDiffSimd::loadTable(m_second.high.data());
    auto const missesAt = [&](Text span) {
        Span const first = MoDiffSimd::lookUpHalves(firstLow, firstHigh, MoDiffSimd::load(span));
        Span const second = MoDiffSimd::lookUpHalves(secondLow, secondHigh, MoDiffSimd::load(span + 1));
        return MoDiffSimd::equal(MoDiffSimd::both(first, second), MoDiffSimd::nothing());
    };
    std::size_t const kTwo = 2 * kSpan;
    for (; static_cast<std::size_t>(end - text) > kTwo; text += kTwo) {
        Span const low = missesAt(text);
        Span const high = missesAt(text + kSpan);
        if (MoDiffSimd::isAll(MoDiffSimd::both(low, high)))
            continue;
        std::uint64_t const misses = MoDiffSimd::bits(low) | std::uint64_t{MoDiffSimd::bits(high)} << kSpan;
        for (std::uint64_t hits = ~misses; hits != 0; hits &= hits - 1)
            addIfHit(text + __builtin_ctzll(hits));
        if (hasTooMany(text))
            break;
    }
    return text;
}

#else

bool MoDiffCandidateIndex::isQuick() {
    return MoDiffWidest::isThere();
}

MoDiffCandidateIndex::Text MoDiffCandidateIndex::addInSpans(Text text, Text) {
    return text;
}

#endif

MoDiffCandidateIndex::Text MoDiffCandidateIndex::find(Text position, std::size_t pair) {
    auto const least = static_cast<std::size_t>(position - m_text) + m_offsets[pair];
    for (; m_next < m_hits.size(); ++m_next) {
        Hit const& hit = m_hits[m_next];
        if (hit.place >= least && (hit.kinds >> pair & 1) != 0)
            return m_text + (hit.place - m_offsets[pair]);
    }
    return nullptr;
}

void MoDiffCandidateIndex::keepBefore(std::uint32_t place) {
    for (; m_read < m_hits.size() && m_hits[m_read].place < place; ++m_read)
        m_hits[m_kept++] = {m_hits[m_read].place - m_removed, m_hits[m_read].kinds};
}

void MoDiffCandidateIndex::remove(Text bytes, std::size_t count) {
    auto const first = static_cast<std::uint32_t>(bytes - m_text);
    auto const behind = static_cast<std::uint32_t>(first + count);
    keepBefore(first);
    std::uint32_t const joint = first - m_removed; // where the bytes behind come to stand
    if (m_kept > 0 && m_hits[m_kept - 1].place + 1 == joint)
        --m_kept; // its second character goes
    while (m_read < m_hits.size() && m_hits[m_read].place < behind)
        ++m_read;
    bool const hasNeighbours = joint > 0 && bytes + count < m_end;
    Kinds const kinds = hasNeighbours ? kindsOf(m_text[joint - 1], bytes[count]) : Kinds{0};
    if (kinds != 0) // the removed match's own hit has left room
        m_hits[m_kept++] = {joint - 1, kinds};
    m_removed += static_cast<std::uint32_t>(count);
}

void MoDiffCandidateIndex::finish() {
    keepBefore(UINT32_MAX);
    m_hits.resize(m_kept);
    m_end -= m_removed;
    m_kept = m_read = m_next = m_removed = 0;
}
