#ifndef MO_DIFF_DELETIONS_H
#define MO_DIFF_DELETIONS_H

#include "MoPackedRanges.h"

#include <cstddef>

/// What one step of cleansing has deleted from its text, in the order of the text.
class MoDiffDeletions {
public:
    /// Adds bytes behind all that were added before, by their place in the text that the step was given; bytes that
    /// follow one another become one range.
    void add(std::size_t begin, std::size_t length) { m_ranges.append({begin, length, 0}); }

    MoPackedRanges const& ranges() const { return m_ranges; }

private:
    MoPackedRanges m_ranges;
};

#endif
