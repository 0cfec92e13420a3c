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

} // namespace

/// One step's place in a row of them: it reads what the one before it has written.
struct MoDiffCleansing::Stage {
    MoDiffScanningMatcher* matcher; ///< null for the carriage returns
    MoDiffTextProgress progress;
};

/// Lets the stages delete what they can in a text that is known up to an end. Returns where the last one has written
/// to.
char* MoDiffCleansing::deleteKnown(std::vector<Stage>& stages, char* known, bool isWhole) {
    static MoDiffLiteralMatcher const returns("\r");
    char* end = known;
    for (Stage& stage : stages) {
        if (stage.matcher)
            stage.matcher->deleteMatches(stage.progress, end, isWhole);
        else
            returns.deleteMatches(stage.progress, end, isWhole);
        end = stage.progress.written;
    }
    return end;
}

void MoDiffCleansing::cleanse(std::initializer_list<Subject*> subjects, Patterns const& patterns) {
    auto pattern = patterns.begin();
    for (bool isFirstGroup = true;; isFirstGroup = false) {
        auto const groupEnd = std::find_if(pattern, patterns.end(), needsWholeTexts);
        if (isFirstGroup || pattern != groupEnd) {
            for (Subject* const subject : subjects)
                deleteByParts(*subject, isFirstGroup, pattern, groupEnd);
        }
        if (groupEnd == patterns.end())
            return;
        checkPattern(*groupEnd);
        for (Subject* const subject : subjects)
            deleteFromWhole(*subject, **groupEnd);
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

void MoDiffCleansing::deleteFromWhole(Subject& subject, MoDiffNormalizationPattern const& pattern) {
    MoDiffDeletions deletions;
    subject.deleted.push_back(pattern.deleteMatches(subject.text, subject.isRecorded ? &deletions : nullptr));
    if (subject.isRecorded)
        subject.deletions.push_back(std::move(deletions));
}

void MoDiffCleansing::deleteByParts(Subject& subject, bool deletesReturns, Iterator begin, Iterator end) {
    std::size_t const count = static_cast<std::size_t>(std::distance(begin, end)) + (deletesReturns ? 1 : 0);
    std::vector<MoDiffDeletions> deletions(subject.isRecorded ? count : 0);
    std::vector<Stage> stages;
    stages.reserve(count);
    auto const addStage = [&](MoDiffScanningMatcher* matcher) {
        MoDiffDeletions* const record = subject.isRecorded ? &deletions[stages.size()] : nullptr;
        stages.push_back({matcher, MoDiffTextProgress(subject.text, record)});
    };
    if (deletesReturns)
        addStage(nullptr);
    for (auto pattern = begin; pattern != end; ++pattern)
        addStage((*pattern)->scanningMatcher());
    deleteByParts(subject, stages);
    std::move(deletions.begin(), deletions.end(), std::back_inserter(subject.deletions));
}

void MoDiffCleansing::deleteByParts(Subject& subject, std::vector<Stage>& stages) {
    char* const text = subject.text;
    char* known = text + strnlen(text, kLongestWhole); // the text's length becomes known part by part
    bool isWhole = *known == '\0';
    if (!isWhole)
        known = text;
    while (!isWhole) {
        known += strnlen(known, kPart);
        isWhole = *known == '\0';
        if (!isWhole)
            deleteKnown(stages, known, isWhole);
    }
    std::fill(deleteKnown(stages, known, isWhole), known, '\0');
    char const* stageEnd = known;
    subject.deleted.reserve(subject.deleted.size() + stages.size());
    for (Stage const& stage : stages) {
        subject.deleted.push_back(static_cast<std::size_t>(stageEnd - stage.progress.written));
        stageEnd = stage.progress.written;
    }
}
