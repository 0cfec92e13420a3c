#ifndef MO_DIFF_DELETIONS_H
#define MO_DIFF_DELETIONS_H

#include <cstddef>
#include <vector>

/// What one step of cleansing has deleted from its text, in the order of the text.
class MoDiffDeletions {
public:
    /// A run of bytes, by its place in the text that the step was given.
    struct Range {
        std::size_t begin;
        std::size_t length;
    };

    /// Adds bytes behind all that were added before; bytes that follow one another become one range.
    void add(std::size_t begin, std::size_t length) {
        if (!m_ranges.empty() && m_ranges.back().begin + m_ranges.back().length == begin)
            m_ranges.back().length += length;
        else
            m_ranges.push_back({begin, length});
    }

    std::vector<Range> const& ranges() const { return m_ranges; }

private:
    std::vector<Range> m_ranges;
};

#endif
