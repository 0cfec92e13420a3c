#ifndef MO_DIFF_LITERAL_MATCHER_H
#define MO_DIFF_LITERAL_MATCHER_H

#include "MoDiffProgram.h"
#include "MoDiffTextProgress.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

/// Deletes a fixed text from texts, where they stand: a block of bytes at a time is marked and moved, so that
/// occurrences without end cost little more than none. Not changed once built; may be used from several threads at
/// once.
class MoDiffLiteralMatcher {
public:
    /// @param text of 1 to MoDiffProgram::kLongestPrefix bytes, which no occurrence of it can overlap
    explicit MoDiffLiteralMatcher(std::string const& text);

    /// Returns nothing for a program that matches anything but one text, or a text that can overlap itself.
    static std::optional<MoDiffLiteralMatcher> create(MoDiffProgram const& program);

    /// Deletes every occurrence from a text as far as it is known.
    /// @param end     where the known text ends
    /// @param isWhole whether the text ends there, too
    void deleteMatches(MoDiffTextProgress& progress, char const* end, bool isWhole) const;

private:
    using Byte = unsigned char;

    void deleteInSpans(MoDiffTextProgress& progress, char const* end) const;
    std::uint32_t findStarts(Byte const* span) const;

    std::array<Byte, MoDiffProgram::kLongestPrefix> m_bytes{};
    std::size_t m_length;
};

#endif
