#ifndef MO_DIFF_HIDDEN_STRETCHES_H
#define MO_DIFF_HIDDEN_STRETCHES_H

#include "MoPackedRanges.h"

#include <cstddef>
#include <vector>

/// What cleansing deleted from a file, and so the way from a byte of the cleansed text to its byte in the file and
/// back. Packed, since a large file has millions of stretches: a line end takes some three and a half bytes.
class MoDiffHiddenStretches {
public:
    using Stretch = MoPackedRanges::Range;
    using Iterator = MoPackedRanges::Iterator;

    MoDiffHiddenStretches() = default;
    explicit MoDiffHiddenStretches(MoPackedRanges stretches);

    bool isEmpty() const { return m_stretches.isEmpty(); }
    std::size_t bytes() const { return m_bytes; }
    /// In the order of the file; valid while the object stays as it is.
    Iterator begin() const { return m_stretches.begin(); }
    Iterator end() const { return m_stretches.end(); }

    /// The first stretch that ends behind a byte of the file.
    Iterator firstBehind(std::size_t fileIndex) const;
    /// The byte of the file that is a byte of the cleansed text; for the text's length the file's.
    std::size_t toFile(std::size_t textIndex) const;
    /// How many bytes of the cleansed text stand before a byte of the file.
    std::size_t toText(std::size_t fileIndex) const;

private:
    /// Where some stretches begin.
    struct Block {
        MoPackedRanges::Mark mark;
        std::size_t fileIndex; ///< of the first one
        std::size_t deleted;   ///< before it
    };

    template<class IsBefore>
    Block blockOf(IsBefore const& isBefore) const;

    MoPackedRanges m_stretches;
    std::vector<Block> m_blocks;
    std::size_t m_bytes = 0;
};

#endif
