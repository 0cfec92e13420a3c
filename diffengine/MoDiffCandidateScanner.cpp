#include "MoDiffCandidateScanner.h"

#include <algorithm>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

using ByteTest = MoDiffCandidateScanner::ByteTest;
using Text = MoDiffCandidateScanner::Text;

/// How often a character is met in a thousand of a report's, roughly; only the order of magnitude matters.
double frequency(unsigned char character) {
    static char const kCommon[] = " etaoinsrdlcu";
    if (std::strchr("\"<>=/", character) && character)
        return 25;
    if (character && std::strchr(kCommon, character))
        return 45;
    if (character >= 'a' && character <= 'z')
        return 12;
    if (character >= '0' && character <= '9')
        return 15;
    return character == '\n' ? 15 : 3;
}

double frequency(std::bitset<128> const& characters) {
    double sum = 0;
    for (unsigned char character = 0; character < 128; ++character)
        sum += characters[character] ? frequency(character) : 0;
    return sum;
}

ByteTest makeTest(MoDiffProgram::Prefix const& prefix, std::size_t offset) {
    std::bitset<128> const& characters = prefix[offset];
    ByteTest test = {offset, 0, {}};
    for (unsigned first = 0; first < 128; ++first) {
        if (!characters[first])
            continue;
        unsigned last = first;
        while (last + 1 < 128 && characters[last + 1])
            ++last;
        if (test.count < ByteTest::kMostRanges) {
            test.ranges[test.count].first.fill(static_cast<std::uint8_t>(first));
            test.ranges[test.count].width.fill(static_cast<std::uint8_t>(last - first));
        }
        ++test.count;
        first = last;
    }
    return test;
}

/// The positions from most to least telling: rare characters, and few ranges to be tested.
std::vector<std::size_t> rankPositions(MoDiffProgram::Prefix const& prefix) {
    std::vector<std::size_t> positions;
    for (std::size_t position = 0; position < prefix.size(); ++position)
        positions.push_back(position);
    auto const cost = [&prefix](std::size_t position) {
        double const ranges = static_cast<double>(makeTest(prefix, position).count);
        return frequency(prefix[position]) * (1 + ranges / 4);
    };
    std::stable_sort(positions.begin(), positions.end(),
                     [&cost](std::size_t a, std::size_t b) { return cost(a) < cost(b); });
    return positions;
}

#ifdef __SSE2__

std::size_t const kBlock = ByteTest::kBlock;

__m128i load(std::uint8_t const* bytes) {
    return _mm_loadu_si128(reinterpret_cast<__m128i const*>(bytes));
}

/// Tests a block for being one byte.
class EqualTest {
public:
    explicit EqualTest(ByteTest const& test) : m_byte(load(test.ranges[0].first.data())) {}
    __m128i operator()(__m128i bytes) const { return _mm_cmpeq_epi8(bytes, m_byte); }

private:
    __m128i m_byte;
};

/// Tests a block for lying in one of a few ranges.
class RangesTest {
public:
    explicit RangesTest(ByteTest const& test) : m_test(test) {}
    __m128i operator()(__m128i bytes) const {
        __m128i result = _mm_setzero_si128();
        for (std::size_t i = 0; i < m_test.count; ++i) {
            __m128i const distance = _mm_sub_epi8(bytes, load(m_test.ranges[i].first.data()));
            __m128i const width = load(m_test.ranges[i].width.data());
            result = _mm_or_si128(result, _mm_cmpeq_epi8(_mm_min_epu8(distance, width), distance));
        }
        return result;
    }

private:
    ByteTest const& m_test;
};

/// Goes through the blocks in which the two tests agree somewhere. Returns the first candidate, or leaves text where
/// the rest is shorter than two blocks.
template<typename First, typename Second, typename IsCandidate>
Text scanBlocks(First const& first, std::size_t firstOffset, Second const& second, std::size_t secondOffset,
                Text& text, Text lastStart, IsCandidate isCandidate) {
    auto const agreement = [&](Text block) {
        return _mm_and_si128(first(load(block + firstOffset)), second(load(block + secondOffset)));
    };
    for (; static_cast<std::size_t>(lastStart - text) >= 2 * kBlock; text += 2 * kBlock) {
        __m128i const low = agreement(text);
        __m128i const high = agreement(text + kBlock);
        if (_mm_movemask_epi8(_mm_or_si128(low, high)) == 0)
            continue;
        auto agreements =
            static_cast<unsigned>(_mm_movemask_epi8(low)) | static_cast<unsigned>(_mm_movemask_epi8(high)) << kBlock;
        for (; agreements != 0; agreements &= agreements - 1) {
            Text const candidate = text + __builtin_ctz(agreements);
            if (isCandidate(candidate))
                return candidate;
        }
    }
    return nullptr;
}

#endif

} // namespace

MoDiffCandidateScanner::MoDiffCandidateScanner(MoDiffProgram::Prefix const& prefix) : m_length(prefix.size()) {
    std::vector<std::size_t> const positions = rankPositions(prefix);
    m_first = makeTest(prefix, positions[0]);
    m_second = makeTest(prefix, positions[positions.size() > 1 ? 1 : 0]);
    for (std::size_t position = 0; position < m_length; ++position) {
        for (unsigned character = 0; character < 128; ++character) {
            if (prefix[position][character])
                m_positions[character] = static_cast<std::uint8_t>(m_positions[character] | 1U << position);
        }
    }
}

Text MoDiffCandidateScanner::findByLookup(Text text, Text end) const {
    for (; static_cast<std::size_t>(end - text) >= m_length; ++text) {
        if (isCandidate(text))
            return text;
    }
    return nullptr;
}

#ifdef __SSE2__

Text MoDiffCandidateScanner::find(Text text, Text end) const {
    if (static_cast<std::size_t>(end - text) < m_length || m_first.count > ByteTest::kMostRanges ||
        m_second.count > ByteTest::kMostRanges)
        return findByLookup(text, end);
    if (isCandidate(text)) // where matches stand close together
        return text;
    Text const lastStart = end - m_length + 1;
    auto const accept = [this](Text candidate) { return isCandidate(candidate); };
    auto const scan = [&](auto const& first, auto const& second) {
        return scanBlocks(first, m_first.offset, second, m_second.offset, text, lastStart, accept);
    };
    Text found = nullptr;
    if (m_first.isOneByte() && m_second.isOneByte())
        found = scan(EqualTest(m_first), EqualTest(m_second));
    else if (m_first.isOneByte())
        found = scan(EqualTest(m_first), RangesTest(m_second));
    else
        found = scan(RangesTest(m_first), RangesTest(m_second));
    return found ? found : findByLookup(text, end);
}

#else

Text MoDiffCandidateScanner::find(Text text, Text end) const {
    if (!m_first.isOneByte())
        return findByLookup(text, end);
    int const byte = m_first.ranges[0].first[0];
    while (static_cast<std::size_t>(end - text) >= m_length) {
        auto const room = static_cast<std::size_t>(end - text) - m_length + 1;
        void const* const met = std::memchr(text + m_first.offset, byte, room);
        if (!met)
            return nullptr;
        text = static_cast<Text>(met) - m_first.offset;
        if (isCandidate(text))
            return text;
        ++text;
    }
    return nullptr;
}

#endif
