#include "MoDiffOutcomeWords.h"

#include <algorithm>

std::array<MoDiffOutcome, kMoDiffOutcomes> const MoDiffOutcomeWords::kOrder = {MoDiffOutcome::eDifferent,
                                                                               MoDiffOutcome::eMissing,
                                                                               MoDiffOutcome::eError,
                                                                               MoDiffOutcome::eCrashed,
                                                                               MoDiffOutcome::eTimeout,
                                                                               MoDiffOutcome::eMemory,
                                                                               MoDiffOutcome::eUnexpectedlyPassed,
                                                                               MoDiffOutcome::eExpected,
                                                                               MoDiffOutcome::ePassed};

std::string MoDiffOutcomeWords::badge(MoDiffOutcome outcome) {
    std::string const word = wordOf(outcome);
    return "<span class=\"outcome " + word + "\">" + word + "</span>";
}

std::string MoDiffOutcomeWords::bar(MoDiffTotals const& totals) {
    std::size_t const width = 1000;
    std::size_t const all = totals.getAll();
    std::string parts;
    std::size_t begin = 0;
    for (MoDiffOutcome const outcome : kOrder) {
        std::size_t const count = totals.getCount(outcome);
        if (count == 0)
            continue;
        std::size_t const part = std::max<std::size_t>(count * width / all, 12); // one of many is seen, too
        parts += "<rect class=\"" + std::string(wordOf(outcome)) + "\" x=\"" + std::to_string(begin) + "\" width=\"" +
                 std::to_string(outcome == MoDiffOutcome::ePassed ? width - std::min(begin, width) : part) +
                 "\" height=\"10\"/>";
        begin += part;
    }
    return "<svg class=\"bar\" viewBox=\"0 0 1000 10\" preserveAspectRatio=\"none\" aria-hidden=\"true\">" + parts +
           "</svg>";
}
