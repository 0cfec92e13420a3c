#include "MoDiffHiddenStretches.h"

#include <algorithm>

namespace {

std::size_t const kStretchesOfBlock = 64;

} // namespace

MoDiffHiddenStretches::MoDiffHiddenStretches(MoPackedRanges stretches) : m_stretches(std::move(stretches)) {
    std::size_t count = 0;
    std::size_t lastEnd = 0;
    for (auto stretch = begin(); stretch != end(); ++stretch, ++count) {
        if (count % kStretchesOfBlock == 0)
            m_blocks.push_back({MoPackedRanges::markOf(stretch, lastEnd), stretch->begin, m_bytes});
        lastEnd = stretch->end();
        m_bytes += stretch->length;
    }
}

/// The last block whose first stretch lies before what is looked for, or else the first one.
template<class IsBefore>
MoDiffHiddenStretches::Block MoDiffHiddenStretches::blockOf(IsBefore const& isBefore) const {
    auto const behind = std::partition_point(m_blocks.begin(), m_blocks.end(), isBefore);
    return behind == m_blocks.begin() ? Block{{}, 0, 0} : *std::prev(behind);
}

MoDiffHiddenStretches::Iterator MoDiffHiddenStretches::firstBehind(std::size_t fileIndex) const {
    auto stretch =
        m_stretches.from(blockOf([fileIndex](Block const& block) { return block.fileIndex <= fileIndex; }).mark);
    while (stretch != end() && stretch->end() <= fileIndex)
        ++stretch;
    return stretch;
}

std::size_t MoDiffHiddenStretches::toFile(std::size_t textIndex) const {
    // A stretch's place in the cleansed text is its begin without all that was deleted before it.
    Block const block =
        blockOf([textIndex](Block const& candidate) { return candidate.fileIndex - candidate.deleted <= textIndex; });
    std::size_t deleted = block.deleted;
    for (auto stretch = m_stretches.from(block.mark); stretch != end() && stretch->begin - deleted <= textIndex;
         ++stretch)
        deleted += stretch->length;
    return textIndex + deleted;
}

std::size_t MoDiffHiddenStretches::toText(std::size_t fileIndex) const {
    Block const block = blockOf([fileIndex](Block const& candidate) { return candidate.fileIndex <= fileIndex; });
    std::size_t deleted = block.deleted;
    for (auto stretch = m_stretches.from(block.mark); stretch != end() && stretch->begin < fileIndex; ++stretch)
        deleted += std::min(stretch->length, fileIndex - stretch->begin);
    return fileIndex - deleted;
}
