#include "MoDiffCandidateScanner.h"

#include "MoDiffCharacterFrequency.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

using ByteTest = MoDiffCandidateScanner::ByteTest;
using Text = MoDiffCandidateScanner::Text;

double frequency(std::bitset<128> const& characters) {
    double sum = 0;
    for (unsigned char character = 0; character < 128; ++character)
        sum += characters[character] ? MoDiffCharacterFrequency::of(character) : 0;
    return sum;
}

using Bytes = MoDiffCandidateScanner::Bytes;

Bytes bytesOf(std::bitset<128> const& characters) {
    Bytes bytes;
    for (unsigned character = 0; character < 128; ++character)
        bytes[character] = characters[character];
    return bytes;
}

ByteTest makeTest(Bytes const& bytes, std::size_t offset) {
    ByteTest test = {offset, 0, {}};
    for (unsigned first = 0; first < bytes.size(); ++first) {
        if (!bytes[first])
            continue;
        unsigned last = first;
        while (last + 1 < bytes.size() && bytes[last + 1])
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

/// The two most telling positions, which are one where there are no two: rare characters, and few ranges to be
/// tested.
std::pair<std::size_t, std::size_t> choosePositions(MoDiffProgram::Prefix const& prefix) {
    auto const cost = [&prefix](std::size_t position) {
        double const ranges = static_cast<double>(makeTest(bytesOf(prefix[position]), position).count);
        return frequency(prefix[position]) * (1 + ranges / 4);
    };
    auto const choose = [&](std::size_t excluded) {
        std::size_t best = excluded == 0 ? prefix.size() - 1 : 0;
        for (std::size_t position = 0; position < prefix.size(); ++position) {
            if (position != excluded && cost(position) < cost(best))
                best = position;
        }
        return best;
    };
    std::size_t const first = choose(prefix.size());
    return {first, choose(first)};
}

#ifdef MO_DIFF_HAS_SIMD

using MoDiffSimd::kSpan;
using MoDiffSimd::load;
using MoDiffSimd::Span;

/// Tests a span for being one byte.
class EqualTest {
public:
    explicit EqualTest(ByteTest const& test) : m_byte(load(test.ranges[0].first.data())) {}
    Span operator()(Span bytes) const { return MoDiffSimd::equal(bytes, m_byte); }

private:
    Span m_byte;
};

/// Tests a span for lying in one of a few ranges.
class RangesTest {
public:
    explicit RangesTest(ByteTest const& test) : m_test(test) {}
    Span operator()(Span bytes) const {
        Span result = MoDiffSimd::nothing();
        for (std::size_t i = 0; i < m_test.count; ++i) {
            ByteTest::Range const& range = m_test.ranges[i];
            Span const isInside = MoDiffSimd::inRange(bytes, load(range.first.data()), load(range.width.data()));
            result = MoDiffSimd::either(result, isInside);
        }
        return result;
    }

private:
    ByteTest const& m_test;
};

/// What finds nothing in a span.
struct NoTest {
    Span operator()(Span) const { return MoDiffSimd::nothing(); }
};

/// Where two tests agree and another one confirms it, or a fourth one holds by itself, in a span: a bit a byte.
template<typename First, typename Second, typename Loners>
class SpanTest {
public:
    SpanTest(First const& first, std::size_t firstOffset, Second const& second, std::size_t secondOffset,
             Loners const& loners, ByteTest const& confirming)
        : m_first(first), m_second(second), m_loners(loners), m_confirming(confirming), m_firstOffset(firstOffset),
          m_secondOffset(secondOffset), m_confirmingOffset(confirming.offset), m_isConfirmed(confirming.count > 0) {}

    std::uint32_t operator()(Text span) const {
        Span const agreed = agreement(span);
        if (!MoDiffSimd::isAny(agreed))
            return 0;
        return MoDiffSimd::bits(m_isConfirmed ? MoDiffSimd::both(agreed, confirmation(span)) : agreed);
    }

    /// Whether two spans may hold a hit: quicker than to look at one after the other.
    bool isAnyInTwo(Text spans) const {
        return MoDiffSimd::isAny(MoDiffSimd::either(agreement(spans), agreement(spans + kSpan)));
    }

private:
    Span agreement(Text span) const {
        Span const isBoth =
            MoDiffSimd::both(m_first(load(span + m_firstOffset)), m_second(load(span + m_secondOffset)));
        return MoDiffSimd::either(isBoth, m_loners(load(span)));
    }
    Span confirmation(Text span) const {
        return MoDiffSimd::either(m_confirming(load(span + m_confirmingOffset)), m_loners(load(span)));
    }

    First m_first;
    Second m_second;
    Loners m_loners;
    RangesTest m_confirming;
    std::size_t m_firstOffset;
    std::size_t m_secondOffset;
    std::size_t m_confirmingOffset;
    bool m_isConfirmed;
};

/// The bits for the first span that has some; leaves text there, or where the rest is shorter than a span.
template<typename First, typename Second, typename Loners>
std::uint32_t scanSpans(SpanTest<First, Second, Loners> const& test, Text& text, Text lastStart) {
    while (static_cast<std::size_t>(lastStart - text) >= kSpan) {
        if (std::uint32_t const hits = test(text))
            return hits;
        text += kSpan;
        if constexpr (MoDiffSimd::kIsSpanOneInstruction) { // else it only costs where candidates stand close together
            while (static_cast<std::size_t>(lastStart - text) >= 2 * kSpan && !test.isAnyInTwo(text))
                text += 2 * kSpan;
        }
    }
    return 0;
}

#endif

} // namespace

MoDiffCandidateScanner::MoDiffCandidateScanner(MoDiffProgram::Prefix const& prefix, Bytes const& loners)
    : m_length(prefix.size()), m_first{}, m_second{}, m_confirming{}, m_loners(makeTest(loners, 0)) {
    if (m_length > 0) {
        auto const [first, second] = choosePositions(prefix);
        m_first = makeTest(bytesOf(prefix[first]), first);
        m_second = makeTest(bytesOf(prefix[second]), second);
        // What is nearly a candidate fails late most of the time.
        for (std::size_t position = std::max(first, second) + 1; position < m_length; ++position) {
            ByteTest const test = makeTest(bytesOf(prefix[position]), position);
            if (test.count == 1) // as quick as can be
                m_confirming = test;
        }
    }
    m_method = chooseMethod();
    for (std::size_t position = 0; position < m_length; ++position) {
        for (unsigned character = 0; character < 128; ++character)
            m_positions[character] |= std::uint32_t{prefix[position][character]} << position;
    }
    for (unsigned byte = 0; byte < loners.size(); ++byte) {
        if (loners[byte])
            m_positions[byte] |= kLoner;
    }
}

Text MoDiffCandidateScanner::findInIndex(Text text, Text end, Cursor& cursor) const {
    Text candidate = cursor.m_index->find(text, cursor.m_pair);
    while (candidate && !(static_cast<std::size_t>(end - candidate) >= m_length && isCandidate(candidate)))
        candidate = cursor.m_index->find(candidate + 1, cursor.m_pair);
    return candidate;
}

Text MoDiffCandidateScanner::findByLookup(Text text, Text end) const {
    for (; text < end; ++text) {
        bool const hasRoom = static_cast<std::size_t>(end - text) >= m_length;
        if (hasRoom ? isCandidate(text) : (m_positions[*text] & kLoner) != 0)
            return text;
    }
    return nullptr;
}

#ifdef MO_DIFF_HAS_SIMD

MoDiffCandidateScanner::Method MoDiffCandidateScanner::chooseMethod() const {
    if (std::max({m_first.count, m_second.count, m_loners.count}) > ByteTest::kMostRanges)
        return eLookup;
    if (m_length == 0)
        return eLoners;
    if (m_loners.count > 0)
        return ePrefixOrLoners;
    if (!m_first.isOneByte())
        return eRanges;
    return m_second.isOneByte() ? eTwoBytes : eByteAndRanges;
}

/// Searches span by span; leaves text where the rest is shorter than one.
Text MoDiffCandidateScanner::scan(Text& text, Text lastStart, Cursor& cursor) const {
    auto const scanFor = [&](auto const& first, auto const& second, auto const& loners) -> Text {
        SpanTest const test(first, m_first.offset, second, m_second.offset, loners, m_confirming);
        while ((cursor.m_hits = scanSpans(test, text, lastStart)) != 0) {
            cursor.m_span = text;
            text += kSpan;
            if (Text const candidate = takeHit(cursor))
                return candidate;
        }
        return nullptr;
    };
    switch (m_method) {
    case eLoners:
        return scanFor(NoTest(), NoTest(), RangesTest(m_loners));
    case ePrefixOrLoners:
        return scanFor(RangesTest(m_first), RangesTest(m_second), RangesTest(m_loners));
    case eTwoBytes:
        return scanFor(EqualTest(m_first), EqualTest(m_second), NoTest());
    case eByteAndRanges:
        return scanFor(EqualTest(m_first), RangesTest(m_second), NoTest());
    case eRanges:
        return scanFor(RangesTest(m_first), RangesTest(m_second), NoTest());
    case eLookup:
        break;
    }
    return nullptr;
}

Text MoDiffCandidateScanner::findBeyond(Text text, Text end, Cursor& cursor) const {
    if (cursor.m_index)
        return findInIndex(text, end, cursor);
    std::size_t const least = std::max(m_length, std::size_t{1});
    if (static_cast<std::size_t>(end - text) >= least) {
        if (Text const candidate = scan(text, end - least + 1, cursor))
            return candidate;
    }
    return findByLookup(text, end);
}

#else

MoDiffCandidateScanner::Method MoDiffCandidateScanner::chooseMethod() const {
    return eLookup;
}

Text MoDiffCandidateScanner::findBeyond(Text text, Text end, Cursor& cursor) const {
    if (cursor.m_index)
        return findInIndex(text, end, cursor);
    if (!m_first.isOneByte() || m_loners.count > 0)
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
