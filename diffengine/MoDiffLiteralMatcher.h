#ifndef MO_DIFF_LITERAL_MATCHER_H
#define MO_DIFF_LITERAL_MATCHER_H

#include "MoDiffProgram.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

/// Deletes a fixed text from texts, where they stand: a block of bytes at a time is marked and moved, so that
/// occurrences without end cost little more than none. Not changed once built; may be used from several threads at
/// once.
class MoDiffLiteralMatcher {
public:
    /// Returns nothing for a program that matches anything but one text, or a text that can overlap itself.
    static std::optional<MoDiffLiteralMatcher> create(MoDiffProgram const& program);

    /// Deletes every occurrence from a text of the given length in bytes; fills the freed end with zeros.
    void deleteMatches(char* text, std::size_t length) const;

private:
    using Byte = unsigned char;
    struct Place {
        Byte const* read;
        Byte* written;
        Byte const* end;
    };

    explicit MoDiffLiteralMatcher(MoDiffProgram::Prefix const& characters);

    void moveBlocks(Place& place) const;
    std::uint32_t findStarts(Byte const* block) const;
    void moveBytes(Place& place) const;

    std::array<Byte, MoDiffProgram::kLongestPrefix> m_bytes{};
    std::size_t m_length;
};

#endif
