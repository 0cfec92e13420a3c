#include "MoDiffNormalizationPattern.h"

#include "KLTAssert.h"
#include "MoDiffScanningMatcher.h"
#include "MoDiffWholeTextMatcher.h"
#include "MoOwnMemory.h"

#include <algorithm>
#include <cstring>

/// The expression, by the quickest way of matching that serves it. What is not needed before the first text is built
/// then, so that loading the library with its catalogue stays quick.
class MoDiffNormalizationPattern::Matcher {
public:
    explicit Matcher(char const* regex) : m_regex(regex ? regex : "") {
        if (regex)
            m_expression = MoDiffExpression::parse(m_regex);
        if (!m_expression)
            m_wholeText = std::make_unique<MoDiffWholeTextMatcher>(regex); // raises what is not well-formed
    }

    MoDiffScanningMatcher* scanning() {
        if (!m_scanning && m_expression)
            build();
        return m_scanning.get();
    }

    void deleteMatches(MoDiffTextProgress& progress, char const* end) {
        if (scanning())
            m_scanning->deleteMatches(progress, end, /*isWhole=*/true);
        else
            m_wholeText->deleteMatches(progress, end);
    }

private:
    void build() {
        MoOwnMemory::Scope const scope(m_ownMemory);
        m_scanning = MoDiffScanningMatcher::create(*m_expression);
        if (!m_scanning)
            m_wholeText = std::make_unique<MoDiffWholeTextMatcher>(m_regex.c_str());
        m_expression.reset();
    }

    MoOwnMemory m_ownMemory; // what build() makes
    std::string m_regex;
    std::optional<MoDiffExpression> m_expression; // until it has been built into one of the matchers
    std::unique_ptr<MoDiffScanningMatcher> m_scanning;
    std::unique_ptr<MoDiffWholeTextMatcher> m_wholeText;
};

MoDiffNormalizationPattern::MoDiffNormalizationPattern(char const* regex) : m_matcher(new Matcher(regex)) {
}

MoDiffNormalizationPattern::~MoDiffNormalizationPattern() = default;

MoDiffScanningMatcher* MoDiffNormalizationPattern::scanningMatcher() const {
    return m_matcher->scanning();
}

void MoDiffNormalizationPattern::normalizeText(char* buffer) const {
    KLT_ASSERT_AT("MoDiffNormalizationPattern", 72, "KLT_ASSERT(buffer);", buffer);
    deleteMatches(buffer, nullptr);
}

std::size_t MoDiffNormalizationPattern::deleteMatches(char* text, MoDiffDeletions* deletions) const {
    char* const end = text + std::strlen(text);
    MoDiffTextProgress progress(text, deletions);
    if (text != end)
        m_matcher->deleteMatches(progress, end);
    std::fill(progress.written, end, '\0');
    return static_cast<std::size_t>(end - progress.written);
}
