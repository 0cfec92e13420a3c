#ifndef MO_DIFF_CANDIDATE_INDEX_H
#define MO_DIFF_CANDIDATE_INDEX_H

#include "MoDiffProgram.h"
#include "MoDiffWidest.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Where in a text matches of several expressions can begin: found in one pass for all of them, by two neighbouring
/// characters of each, and kept true while their matches are deleted, expression by expression. Used by one thread.
class MoDiffCandidateIndex {
public:
    using Text = unsigned char const*;

    /// Two neighbouring positions of the characters with which every match begins.
    struct Pair {
        std::size_t offset; ///< of the first from a match's start
        std::string first;  ///< the characters that may stand there
        std::string second;
    };

    /// Whether a pass tests many bytes at once for all expressions; else one for each is quicker.
    static bool isQuick();
    static std::size_t constexpr kMostPairs = 16;

    /// The pair by which a match's beginning is told best; none when there is no pair, or only common ones.
    static std::optional<Pair> choosePair(MoDiffProgram::Prefix const& prefix);

    /// Adds a pair to be found, whose number is how many were added before it: at most kMostPairs, before build().
    void add(Pair const& pair);

    /// Finds the pairs in a text below 4 GiB, which must stay where it is. Returns false when there are so many of
    /// them that searching for each is the better way; then nothing else may be called.
    bool build(Text text, Text end);

    /// The first place from a position on, not before one asked for since the last finish(), where a match that has
    /// the pair can begin; null when there is none.
    /// @param pair its number
    Text find(Text position, std::size_t pair);

    /// Bytes are deleted from the text as the last finish() has left it, behind all that were before. What stays in
    /// front of them has been moved to where it belongs already.
    void remove(Text bytes, std::size_t count);

    /// All that was to be removed has been, and the text's bytes have moved together.
    void finish();

private:
    using Kinds = std::uint16_t;               ///< a bit for each pair
    static std::size_t constexpr kBuckets = 8; ///< pairs by the low digits of their number

    struct Hit {
        std::uint32_t place; ///< of the first character
        Kinds kinds;
    };

    /// Which pairs may have a byte at one of their positions, by the byte; in buckets by characters and by their
    /// halves.
    struct Position {
        std::array<Kinds, 256> kinds;
        MoDiffWidest::Buckets buckets;
        std::array<std::uint8_t, 16> low;
        std::array<std::uint8_t, 16> high;
        void add(std::string const& characters, std::size_t pair);
    };

    Kinds kindsOf(unsigned char first, unsigned char second) const {
        return m_first.kinds[first] & m_second.kinds[second];
    }
    void keepBefore(std::uint32_t place);
    void addIfHit(Text place);
    bool hasTooMany(Text place) const;
    Text addInBlocks(Text text, Text end);
    Text addInSpans(Text text, Text end);

    Text m_text = nullptr;
    Text m_end = nullptr;
    std::size_t m_pairs = 0;
    std::array<std::size_t, kMostPairs> m_offsets; ///< by pair
    Position m_first = {};
    Position m_second = {};
    std::vector<Hit> m_hits; ///< up to m_kept in the shortened text, from m_read on in the former one
    std::size_t m_kept = 0;
    std::size_t m_read = 0;
    std::size_t m_next = 0;      ///< from here on find() looks
    std::uint32_t m_removed = 0; ///< bytes since the last finish()
};

#endif
