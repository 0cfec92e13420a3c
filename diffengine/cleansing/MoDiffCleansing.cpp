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

/// For fewer steps, searching for the candidates of each is quicker than a list for all.
std::ptrdiff_t const kFewestListed = 5;
std::ptrdiff_t const kMostListed = MoDiffCandidateIndex::kMostPairs;

} // namespace

/// One step's place in a row of them: it reads what the one before it has written.
struct MoDiffCleansing::Stage {
    MoDiffScanningMatcher* matcher; ///< null for the carriage returns
    MoDiffTextProgress progress;
};

/// Lets the stages delete what they can in a text that is known up to an end. Returns where the last one has written
/// to.
char* MoDiffCleansing::deleteKnown(StageIterator begin, StageIterator stagesEnd, char* known, bool isWhole) {
    static MoDiffLiteralMatcher const returns("\r");
    char* end = known;
    for (auto stage = begin; stage != stagesEnd; ++stage) {
        if (stage->matcher)
            stage->matcher->deleteMatches(stage->progress, end, isWhole);
        else
            returns.deleteMatches(stage->progress, end, isWhole);
        end = stage->progress.written;
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
    subject.length -= subject.deleted.back();
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

/// The same for a text that is known as a whole: steps whose candidates can be listed share a list of them.
char* MoDiffCleansing::deleteWhole(std::vector<Stage>& stages, char* end) {
    auto const hasPair = [](Stage const& stage) { return stage.matcher && stage.matcher->pair(); };
    for (auto stage = stages.begin(); stage != stages.end();) {
        auto const listed = std::find_if(stage, stages.end(), hasPair);
        end = deleteKnown(stage, listed, end, /*isWhole=*/true);
        stage = std::find_if_not(listed, stages.end(), hasPair);
        bool const isWorthwhile =
            MoDiffCandidateIndex::isQuick() && stage - listed >= kFewestListed && stage - listed <= kMostListed;
        end = isWorthwhile ? deleteListed(listed, stage, end) : deleteKnown(listed, stage, end, /*isWhole=*/true);
    }
    return end;
}

/// Lets stages that have pairs delete what they can in a whole text.
char* MoDiffCleansing::deleteListed(StageIterator begin, StageIterator stagesEnd, char* end) {
    auto const bytes = [](char const* place) { return reinterpret_cast<MoDiffCandidateIndex::Text>(place); };
    MoDiffCandidateIndex index;
    for (auto stage = begin; stage != stagesEnd; ++stage)
        index.add(*stage->matcher->pair());
    if (!index.build(bytes(begin->progress.read), bytes(end)))
        return deleteKnown(begin, stagesEnd, end, /*isWhole=*/true);
    std::size_t pair = 0;
    for (auto stage = begin; stage != stagesEnd; ++stage, ++pair) {
        stage->matcher->deleteMatches(stage->progress, end, index, pair);
        end = stage->progress.written;
    }
    return end;
}

void MoDiffCleansing::deleteByParts(Subject& subject, std::vector<Stage>& stages) {
    char* const text = subject.text;
    char* known = text + strnlen(text, kLongestWhole); // the text's length becomes known part by part
    bool isWhole = *known == '\0';
    if (!isWhole)
        known = text;
    char* kept = isWhole ? deleteWhole(stages, known) : text;
    while (!isWhole) {
        known += strnlen(known, kPart);
        isWhole = *known == '\0';
        kept = deleteKnown(stages.begin(), stages.end(), known, isWhole);
    }
    std::fill(kept, known, '\0');
    subject.length = static_cast<std::size_t>(kept - text);
    char const* stageEnd = known;
    subject.deleted.reserve(subject.deleted.size() + stages.size());
    for (Stage const& stage : stages) {
        subject.deleted.push_back(static_cast<std::size_t>(stageEnd - stage.progress.written));
        stageEnd = stage.progress.written;
    }
}
