#include "MoDiffExpectations.h"

#include "MoDiffNearestWord.h"
#include "MoDiffPathGlob.h"

#include <algorithm>
#include <ctime>

namespace {

[[noreturn]] void failIdle(MoDiffExpectedDifference const& rule, MoDiffPlan const& plan) {
    std::vector<std::string> ids;
    for (MoDiffPair const& pair : plan.pairs)
        ids.push_back(pair.id);
    std::string const nearest = MoDiffNearestWord::find(rule.pair, ids);
    throw MoDiffConfigurationError(rule.pairPlace + ": the rule for " + rule.pair + " meets no pair" +
                                   (nearest.empty() ? "" : "; did you mean " + nearest + "?"));
}

} // namespace

MoDiffExpectations::MoDiffExpectations(MoDiffSuiteConfiguration const& configuration, MoDiffPlan const& plan,
                                       std::string const& today) {
    for (MoDiffExpectedDifference const& rule : configuration.expected) {
        MoDiffPathGlob const glob(rule.pair);
        std::string const start = glob.literalStart();
        bool const isOver = !rule.until.empty() && rule.until <= today;
        bool meetsAny = false;
        auto pair = std::lower_bound(plan.pairs.begin(), plan.pairs.end(), start,
                                     [](MoDiffPair const& left, std::string const& id) { return left.id < id; });
        for (; pair != plan.pairs.end() && pair->id.compare(0, start.size(), start) == 0; ++pair) {
            if (!glob.matches(pair->id))
                continue;
            meetsAny = true;
            if (!isOver)
                m_rules.emplace(pair->id, &rule);
        }
        if (!meetsAny && plan.isWhole)
            failIdle(rule, plan);
    }
}

std::string const* MoDiffExpectations::reasonFor(MoDiffPair const& pair) const {
    auto const rule = m_rules.find(pair.id);
    return rule == m_rules.end() ? nullptr : &rule->second->reason;
}

std::string MoDiffExpectations::localDate() {
    std::time_t const now = std::time(nullptr);
    std::tm local = {};
    char text[sizeof "YYYY-MM-DD and more for far years"];
    bool const isKnown = localtime_r(&now, &local) && std::strftime(text, sizeof text, "%Y-%m-%d", &local) > 0;
    return isKnown ? text : "";
}
