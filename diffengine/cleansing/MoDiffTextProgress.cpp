#include "MoDiffTextProgress.h"

#include "MoDiffCandidateIndex.h"
#include "MoDiffDeletions.h"

void MoDiffTextProgress::tell(char const* bytes, std::size_t count) const {
    if (m_deletions)
        m_deletions->add(static_cast<std::size_t>(bytes - m_text), count);
    if (m_index)
        m_index->remove(reinterpret_cast<MoDiffCandidateIndex::Text>(bytes), count);
}
