#include "MoDiffCleansing.h"

#include "KLTAssert.h"
#include "MoDiffScanningMatcher.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <vector>

namespace {

/// A text up to this length stays in the caches anyway, and is better known as a whole.
std::size_t const kLongestWhole = std::size_t{1} << 20;

std::size_t const kPart = std::size_t{128} << 10;

/// One pattern's place in a row of them: it reads what the one before it has written.
struct Stage {
    MoDiffScanningMatcher* matcher;
    MoDiffTextProgress progress;
};

} // namespace

void MoDiffCleansing::cleanse(char* first, char* second, Patterns const& patterns) {
    auto pattern = patterns.begin();
    for (bool isFirstGroup = true;; isFirstGroup = false) {
        auto const groupEnd = std::find_if(pattern, patterns.end(), needsWholeTexts);
        if (isFirstGroup || pattern != groupEnd) {
            for (char* const text : {first, second})
                deleteByParts(text, isFirstGroup, pattern, groupEnd);
        }
        if (groupEnd == patterns.end())
            return;
        checkPattern(*groupEnd);
        for (char* const text : {first, second})
            (*groupEnd)->normalizeText(text);
        pattern = std::next(groupEnd);
    }
}

void MoDiffCleansing::checkPattern(MoDiffNormalizationPattern const* pattern) {
    KLT_ASSERT_AT("MoDiffLib", 135, "KLT_ASSERT(pattern);", pattern);
}

/// True for a null pattern, too, which ends a group like one that needs whole texts.
bool MoDiffCleansing::needsWholeTexts(MoDiffNormalizationPattern const* pattern) {
    return !pattern || !pattern->scanningMatcher();
}

void MoDiffCleansing::deleteByParts(char* text, bool deletesReturns, Iterator begin, Iterator end) {
    MoDiffLiteralMatcher const returns("\r");
    MoDiffTextProgress withoutReturns(text);
    std::vector<Stage> stages;
    for (auto pattern = begin; pattern != end; ++pattern)
        stages.push_back({(*pattern)->scanningMatcher(), MoDiffTextProgress(text)});

    std::size_t part = strnlen(text, kLongestWhole);
    char* known = text + part; // the text's length becomes known part by part
    bool isWhole = *known == '\0';
    if (!isWhole)
        known = text;
    char* written = nullptr;
    do {
        if (!isWhole) {
            part = strnlen(known, kPart);
            known += part;
            isWhole = *known == '\0';
        }
        written = known;
        if (deletesReturns) {
            returns.deleteMatches(withoutReturns, written, isWhole);
            written = withoutReturns.written;
        }
        for (Stage& stage : stages) {
            stage.matcher->deleteMatches(stage.progress, written, isWhole);
            written = stage.progress.written;
        }
    } while (!isWhole);
    std::fill(written, known, '\0');
}
