#include "MoDiffCleansingMap.h"

#include "KLTAssert.h"
#include "MoDiffCleansing.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

using Stretch = MoDiffCleansingMap::Stretch;

/// Merges what one step deleted into what the steps before it did. A step counts in the text that those left over; so
/// its ranges are moved behind the stretches before them, and parted where stretches lie within.
class Merger {
public:
    explicit Merger(std::vector<Stretch> const& before) : m_next(before.begin()), m_end(before.end()) {}

    std::vector<Stretch> merge(std::vector<MoDiffDeletions::Range> const& ranges, unsigned step) {
        m_result.reserve(static_cast<std::size_t>(m_end - m_next) + ranges.size());
        for (MoDiffDeletions::Range const& range : ranges)
            add(range, step);
        m_result.insert(m_result.end(), m_next, m_end);
        return std::move(m_result);
    }

private:
    void add(MoDiffDeletions::Range range, unsigned step) {
        while (range.length > 0) {
            for (; m_next != m_end && m_next->begin <= range.begin + m_passed; ++m_next) {
                m_result.push_back(*m_next);
                m_passed += m_next->length;
            }
            std::size_t const begin = range.begin + m_passed;
            std::size_t const count = m_next == m_end ? range.length : std::min(range.length, m_next->begin - begin);
            m_result.push_back({begin, count, step});
            range.begin += count;
            range.length -= count;
        }
    }

    std::vector<Stretch>::const_iterator m_next; ///< the first stretch that is not in the result yet
    std::vector<Stretch>::const_iterator m_end;
    std::size_t m_passed = 0; ///< bytes of the stretches in the result that are not this step's
    std::vector<Stretch> m_result;
};

} // namespace

MoDiffCleansingMap MoDiffCleansingMap::cleanse(std::string text, MoDiffLib::Patterns const& patterns) {
    MoDiffCleansingMap map;
    map.m_text = std::move(text);
    map.m_fileLength = std::strlen(map.m_text.c_str());
    MoDiffCleansing::Subject subject(map.m_text.data());
    subject.isRecorded = true;
    MoDiffCleansing::cleanse({&subject}, patterns);
    map.m_text.resize(std::strlen(map.m_text.c_str()));
    unsigned step = 0;
    for (MoDiffDeletions& deletions : subject.deletions) {
        if (!deletions.ranges().empty())
            map.m_stretches = Merger(map.m_stretches).merge(deletions.ranges(), step);
        deletions = {};
        ++step;
    }
    map.m_deletedUpTo.reserve(map.m_stretches.size());
    std::size_t deleted = 0;
    for (Stretch const& stretch : map.m_stretches)
        map.m_deletedUpTo.push_back(deleted += stretch.length);
    map.m_deletedBySteps = std::move(subject.deleted);
    return map;
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
