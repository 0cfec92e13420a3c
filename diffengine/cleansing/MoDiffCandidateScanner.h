#ifndef MO_DIFF_CANDIDATE_SCANNER_H
#define MO_DIFF_CANDIDATE_SCANNER_H

#include "MoDiffCandidateIndex.h"
#include "MoDiffProgram.h"
#include "MoDiffSimd.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>

/// Finds the places of a text where a match can begin, by the characters with which every match begins: two of its
/// positions, chosen so that they are rarely met together, are searched for many bytes at a time; the others are
/// looked up where both are met. Bytes can be added that are candidates by themselves. Building and searching
/// allocate nothing; once built it is not changed and may be used from several threads at once.
class MoDiffCandidateScanner {
public:
    using Text = unsigned char const*;
    using Bytes = std::bitset<256>;

    /// What a search has seen beyond the candidate that it returned, so that the next one goes on there.
    class Cursor {
    public:
        Cursor() = default;
        /// For a search in an index.
        /// @param pair by which the scanner's candidates are found there
        Cursor(MoDiffCandidateIndex& index, std::size_t pair) : m_index(&index), m_pair(pair) {}

    private:
        friend class MoDiffCandidateScanner;
        Text m_span = nullptr;    ///< the bytes tested last
        std::uint32_t m_hits = 0; ///< where in them candidates may be, a bit a byte
        MoDiffCandidateIndex* m_index = nullptr;
        std::size_t m_pair = 0;
    };

    /// @param loners bytes that are candidates whatever follows
    /// REQUIRES: the prefix or the loners are not empty.
    explicit MoDiffCandidateScanner(MoDiffProgram::Prefix const& prefix, Bytes const& loners = {});

    /// The first candidate in [text, end), whole before end; null when there is none.
    /// @param cursor a new one, or one that has served for this text, unchanged since from text on, with the same end
    Text find(Text text, Text end, Cursor& cursor) const {
        auto const passed = static_cast<std::size_t>(text - cursor.m_span);
        if (cursor.m_span && passed < MoDiffSimd::kSpan) {
            cursor.m_hits &= ~std::uint32_t{0} << passed;
            if (Text const candidate = takeHit(cursor))
                return candidate;
            text = cursor.m_span + MoDiffSimd::kSpan;
        }
        return findBeyond(text, end, cursor);
    }

    /// The first place from begin on from which what stands before a loner agrees with the prefix; for all other
    /// candidates, and when there is none, the candidate itself.
    Text startBefore(Text begin, Text candidate) const {
        if ((m_positions[*candidate] & kLoner) == 0)
            return candidate;
        Text start =
            candidate - std::min(static_cast<std::size_t>(candidate - begin), std::max(m_length, std::size_t{1}) - 1);
        while (start < candidate && !agrees(start, candidate))
            ++start;
        return start;
    }

    /// Whether find() tests many bytes at a time.
    bool isQuick() const { return m_method != eLookup; }

    /// A set of bytes as the search sees it: a few ranges, each bound repeated for as many bytes as are tested at
    /// once.
    struct ByteTest {
        static std::size_t constexpr kMostRanges = 4;
        struct Range {
            std::array<std::uint8_t, MoDiffSimd::kSpan> first;
            std::array<std::uint8_t, MoDiffSimd::kSpan> width; ///< last - first
        };
        std::size_t offset; ///< from a candidate's start
        std::size_t count;  ///< of the ranges; more than kMostRanges are counted, but not kept
        std::array<Range, kMostRanges> ranges;

        bool isOneByte() const { return count == 1 && ranges[0].width[0] == 0; }
    };

private:
    static std::uint32_t constexpr kLoner = std::uint32_t{1} << 31;
    static_assert(MoDiffProgram::kLongestPrefix <= 31, "a bit for each position is left beside the one for loners");

    bool hasPrefix(Text text) const { return m_length > 0 && agrees(text, text + m_length); }
    /// Whether the text up to stop is what the prefix begins with.
    bool agrees(Text text, Text stop) const {
        for (unsigned position = 0; text < stop; ++position, ++text) {
            if ((m_positions[*text] >> position & 1) == 0)
                return false;
        }
        return true;
    }
    enum Method { eLookup, eLoners, ePrefixOrLoners, eTwoBytes, eByteAndRanges, eRanges };

    Method chooseMethod() const;
    /// The next candidate among a cursor's hits; null when there is none.
    Text takeHit(Cursor& cursor) const {
        while (cursor.m_hits != 0) {
            Text const candidate = cursor.m_span + __builtin_ctz(cursor.m_hits);
            cursor.m_hits &= cursor.m_hits - 1;
            if (isCandidate(candidate))
                return candidate;
        }
        return nullptr;
    }
    Text findBeyond(Text text, Text end, Cursor& cursor) const;
    Text findInIndex(Text text, Text end, Cursor& cursor) const;
    Text scan(Text& text, Text lastStart, Cursor& cursor) const;
    bool isCandidate(Text text) const { return (m_positions[*text] & kLoner) != 0 || hasPrefix(text); }
    Text findByLookup(Text text, Text end) const;

    std::size_t m_length;
    ByteTest m_first;
    ByteTest m_second;     ///< the same as m_first where one position is all there is
    ByteTest m_confirming; ///< looked at where the two agree, when it has a range
    ByteTest m_loners;
    Method m_method;
    std::array<std::uint32_t, 256> m_positions{}; ///< by byte, the positions at which it may stand, a bit each
};

#endif
