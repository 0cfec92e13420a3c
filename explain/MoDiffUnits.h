#ifndef MO_DIFF_UNITS_H
#define MO_DIFF_UNITS_H

#include "MoDiffChange.h"
#include "MoDiffSplitter.h"

#include <cstdint>
#include <string_view>
#include <vector>

/// A part of a text taken apart. A unit is known by a hash of its bytes; that two units are equal is to be made sure
/// of by their bytes.
class MoDiffUnits {
public:
    static constexpr std::size_t kBytesPerUnit = 8;

    /// The text must outlive the units.
    /// @param range below 4 GiB
    MoDiffUnits(std::string_view text, MoDiffSplitter const& splitter, MoDiffGrain grain, MoDiffRange range);

    std::vector<std::uint32_t> const& hashes() const { return m_hashes; }
    std::size_t size() const { return m_hashes.size(); }
    /// Where a unit begins in the text; for the number of units where the last one ends.
    std::size_t begin(std::size_t index) const { return index == 0 ? m_begin : m_begin + m_ends[index - 1]; }
    /// The bytes of some units.
    std::string_view bytes(std::size_t first, std::size_t end) const {
        return m_text.substr(begin(first), begin(end) - begin(first));
    }
    std::string_view text() const { return m_text; }

    /// How many units a part of a text has; std::size_t's largest value for 4 GiB and more.
    static std::size_t count(std::string_view text, MoDiffSplitter const& splitter, MoDiffGrain grain,
                             MoDiffRange range);

    /// Takes from parts of two texts the tokens that they have in common at their ends, but for some that a change
    /// may be moved over. Equal parts become empty.
    static void trimEnds(MoDiffBothSides<std::string_view> const& texts, MoDiffSplitter const& splitter,
                         MoDiffBothSides<MoDiffRange>& ranges);

private:
    std::string_view m_text;
    std::size_t m_begin;
    std::vector<std::uint32_t> m_hashes;
    std::vector<std::uint32_t> m_ends; ///< behind m_begin
};

#endif
