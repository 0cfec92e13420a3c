#include "MoDiffCleansingMap.h"

#include "KLTAssert.h"
#include "MoDiffCleansing.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

using Range = MoPackedRanges::Range;

/// Merges what one step deleted into what the steps before it did. A step counts in the text that those left over; so
/// its ranges are moved behind the stretches before them, and parted where stretches lie within.
class Merger {
public:
    explicit Merger(MoPackedRanges const& before) : m_next(before.begin()), m_end(before.end()) {}

    MoPackedRanges merge(MoPackedRanges const& ranges, unsigned step) {
        for (Range const& range : ranges)
            add(range, step);
        for (; m_next != m_end; ++m_next)
            m_result.append(*m_next);
        return std::move(m_result);
    }

private:
    void add(Range range, unsigned step) {
        while (range.length > 0) {
            for (; m_next != m_end && m_next->begin <= range.begin + m_passed; ++m_next) {
                m_result.append(*m_next);
                m_passed += m_next->length;
            }
            std::size_t const begin = range.begin + m_passed;
            std::size_t const count = m_next == m_end ? range.length : std::min(range.length, m_next->begin - begin);
            m_result.append({begin, count, step});
            range.begin += count;
            range.length -= count;
        }
    }

    MoPackedRanges::Iterator m_next; ///< the first stretch that is not in the result yet
    MoPackedRanges::Iterator m_end;
    std::size_t m_passed = 0; ///< bytes of the stretches in the result that are not this step's
    MoPackedRanges m_result;
};

/// Cleanses a text that ends at its first NUL and returns what was deleted; how much by each step is told, too.
MoPackedRanges cleanseInPlace(std::string& text, MoDiffLib::Patterns const& patterns,
                              std::vector<std::size_t>& deletedBySteps) {
    MoDiffCleansing::Subject subject(text.data());
    subject.isRecorded = true;
    MoDiffCleansing::cleanse({&subject}, patterns);
    text.resize(std::strlen(text.c_str()));
    MoPackedRanges stretches;
    unsigned step = 0;
    for (MoDiffDeletions& deletions : subject.deletions) {
        if (!deletions.ranges().isEmpty())
            stretches = Merger(stretches).merge(deletions.ranges(), step);
        deletions = {};
        ++step;
    }
    deletedBySteps = std::move(subject.deleted);
    return stretches;
}

} // namespace

MoDiffCleansingMap MoDiffCleansingMap::cleanse(std::string text, MoDiffLib::Patterns const& patterns) {
    MoDiffCleansingMap map;
    map.m_text = std::move(text);
    map.m_fileLength = std::strlen(map.m_text.c_str());
    MoPackedRanges const stretches = cleanseInPlace(map.m_text, patterns, map.m_deletedBySteps);
    std::size_t deleted = 0;
    for (Range const& stretch : stretches) {
        map.m_stretches.push_back({stretch.begin, stretch.length, stretch.step});
        map.m_deletedUpTo.push_back(deleted += stretch.length);
    }
    return map;
}

void MoDiffCleansingMap::cleanse(std::string& text, MoDiffLib::Patterns const& patterns, StretchSink const& sink) {
    std::vector<std::size_t> deletedBySteps;
    for (Range const& stretch : cleanseInPlace(text, patterns, deletedBySteps))
        sink({stretch.begin, stretch.length, stretch.step});
}

std::size_t MoDiffCleansingMap::toFile(std::size_t cleansedIndex) const {
    KLT_ASSERT_NAMED(cleansedIndex <= m_text.size(), "Index is within the cleansed text");
    // A stretch's place in the cleansed text is its begin without all that was deleted before it.
    std::size_t first = 0;
    std::size_t last = m_stretches.size();
    while (first < last) {
        std::size_t const middle = first + (last - first) / 2;
        Stretch const& stretch = m_stretches[middle];
        if (stretch.begin - (m_deletedUpTo[middle] - stretch.length) <= cleansedIndex)
            first = middle + 1;
        else
            last = middle;
    }
    return cleansedIndex + (first == 0 ? 0 : m_deletedUpTo[first - 1]);
}
