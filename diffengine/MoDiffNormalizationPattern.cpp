#include "MoDiffNormalizationPattern.h"

#include "KLTAssert.h"
#include "MoDiffWholeTextMatcher.h"

#include <cstring>

MoDiffNormalizationPattern::MoDiffNormalizationPattern(char const* regex)
    : m_wholeText(std::make_unique<MoDiffWholeTextMatcher>(regex)) {
}

MoDiffNormalizationPattern::~MoDiffNormalizationPattern() = default;

void MoDiffNormalizationPattern::normalizeText(char* buffer) const {
    KLT_ASSERT_AT("MoDiffNormalizationPattern", 72, "KLT_ASSERT(buffer);", buffer);
    std::size_t const length = std::strlen(buffer);
    if (length > 0)
        m_wholeText->deleteMatches(buffer, length);
}
