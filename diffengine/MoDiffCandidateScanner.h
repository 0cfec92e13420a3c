#ifndef MO_DIFF_CANDIDATE_SCANNER_H
#define MO_DIFF_CANDIDATE_SCANNER_H

#include "MoDiffProgram.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Finds the places of a text where a match can begin, by the characters with which every match begins: two of its
/// positions, chosen so that they are rarely met together, are searched for many bytes at a time; the others are
/// looked up where both are met. Once built it is not changed and may be used from several threads at once.
class MoDiffCandidateScanner {
public:
    using Text = unsigned char const*;

    /// REQUIRES: the prefix is not empty.
    explicit MoDiffCandidateScanner(MoDiffProgram::Prefix const& prefix);

    /// The first candidate in [text, end), whole before end; null when there is none.
    Text find(Text text, Text end) const;

    /// Passes over the candidates that follow each other from text on without a gap; returns where the last one ends.
    Text skip(Text text, Text end) const {
        while (static_cast<std::size_t>(end - text) >= m_length && isCandidate(text))
            text += m_length;
        return text;
    }

    /// A set of bytes as the search sees it: a few ranges, each bound repeated for as many bytes as are tested at
    /// once.
    struct ByteTest {
        static std::size_t constexpr kMostRanges = 4;
        static std::size_t constexpr kBlock = 16;
        struct Range {
            std::array<std::uint8_t, kBlock> first;
            std::array<std::uint8_t, kBlock> width; ///< last - first
        };
        std::size_t offset; ///< from a candidate's start
        std::size_t count;  ///< of the ranges; more than kMostRanges are counted, but not kept
        std::array<Range, kMostRanges> ranges;

        bool isOneByte() const { return count == 1 && ranges[0].width[0] == 0; }
    };

private:
    bool isCandidate(Text text) const {
        for (std::size_t position = 0; position < m_length; ++position) {
            if ((m_positions[text[position]] >> position & 1) == 0)
                return false;
        }
        return true;
    }
    Text findByLookup(Text text, Text end) const;

    std::size_t m_length;
    ByteTest m_first;
    ByteTest m_second;                           ///< the same as m_first where one position is all there is
    std::array<std::uint8_t, 256> m_positions{}; ///< by byte, the positions at which it may stand, a bit each
};

#endif
