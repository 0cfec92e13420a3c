#include "MoDiffSelection.h"
#include "MoDiffExpectations.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numeric>

using testing::ElementsAre;
using testing::HasSubstr;
using Texts = std::vector<std::string>;

namespace {

MoDiffPlan planOf(Texts const& ids) {
    MoDiffPlan plan;
    for (std::string const& id : ids) {
        MoDiffFormatRow const* const format = MoDiffFormatTable::find(id.substr(0, id.find(':')));
        plan.setups.push_back({format, {}});
        plan.pairs.push_back({id, &plan.setups.back(), id, id, {}});
    }
    plan.complete({});
    return plan;
}

Texts selectedIds(MoDiffPlan const& plan) {
    Texts ids;
    for (std::size_t const index : plan.selected)
        ids.push_back(plan.pairs.at(index).id);
    return ids;
}

Texts const kIds = {"csv:r/Masters/CSV/a.csv", "html:r/Masters/[a].html", "html:r/Masters/a.html",
                    "html:s/Masters/a.html", "pdf:s/Masters/PDF/a.pdf"};

Texts chosen(MoDiffSelection::Choice const& choice) {
    MoDiffPlan plan = planOf(kIds);
    MoDiffSelection::apply(choice, plan);
    return selectedIds(plan);
}

std::string refusalOf(MoDiffSelection::Choice const& choice) {
    try {
        chosen(choice);
    } catch (MoDiffSelectionError const& error) {
        return error.what();
    }
    return "(none)";
}

TEST(Selection, KeepsWhatMeetsOneFilterOneFormatAndTheIds) {
    struct Row {
        Texts filters, formats;
        std::optional<std::set<std::string>> ids;
        Texts selected;
    };
    Row const rows[] = {
        {{}, {}, {}, kIds},
        {{"r/Mas"}, {"html"}, {}, {kIds[1], kIds[2]}},
        {{"html:*/Masters/*.html"}, {}, {}, {kIds[1], kIds[2], kIds[3]}},
        {{"**/a.*"}, {}, {}, {kIds[0], kIds[2], kIds[3], kIds[4]}},
        {{"[a]", "csv:"}, {}, {}, {kIds[0], kIds[1]}},
        {{}, {"pdf", "csv"}, {}, {kIds[0], kIds[4]}},
        {{}, {}, std::set<std::string>{kIds[4], "html:gone"}, {kIds[4]}},
        {{}, {}, std::set<std::string>{}, {}},
    };
    for (Row const& row : rows) {
        MoDiffSelection::Choice choice;
        choice.filters = row.filters;
        choice.formats = row.formats;
        choice.ids = row.ids;
        EXPECT_EQ(row.selected, chosen(choice)) << testing::PrintToString(row.filters);
    }
}

TEST(Selection, RefusesWhatCannotBeMeant) {
    MoDiffSelection::Choice choice;
    choice.filters = {"a.html", "b.html"};
    EXPECT_EQ("the filter b.html meets no pair", refusalOf(choice));
    choice = {};
    choice.formats = {"htlm"};
    EXPECT_EQ("there is no format htlm; did you mean html?", refusalOf(choice));
    for (unsigned const index : {0U, 3U}) {
        choice = {};
        choice.shardIndex = index;
        choice.shardCount = 2;
        EXPECT_THAT(refusalOf(choice), HasSubstr("there is no shard " + std::to_string(index) + " of 2"));
    }
}

TEST(Selection, TellsFailuresThatAreGone) {
    MoDiffPlan plan = planOf(kIds);
    MoDiffSelection::Choice choice;
    choice.ids = {"html:gone", kIds[0], "zzz"};
    EXPECT_THAT(MoDiffSelection::apply(choice, plan), ElementsAre("html:gone", "zzz"));
}

TEST(Selection, PutsEachPairInExactlyOneShard) {
    Texts ids;
    std::unordered_map<std::string, double> timings;
    double total = 0;
    for (int number = 100; number < 340; ++number) {
        ids.push_back((number % 3 == 0 ? "xlsx:" : "html:") + std::to_string(number));
        if (number % 5 != 0) {
            double const seconds = number % 40 == 1 ? 9 : 0.01 * (number % 7);
            timings[ids.back()] = seconds;
            total += seconds;
        }
    }
    for (bool const isTimed : {false, true})
        for (unsigned const count : {1U, 2U, 5U, 300U}) {
            std::map<std::size_t, int> times;
            for (unsigned index = 1; index <= count; ++index) {
                MoDiffPlan plan = planOf(ids);
                MoDiffSelection::Choice choice;
                choice.shardIndex = index;
                choice.shardCount = count;
                if (isTimed)
                    choice.timings = timings;
                MoDiffSelection::apply(choice, plan);
                EXPECT_TRUE(std::is_sorted(plan.selected.begin(), plan.selected.end()));
                double seconds = 0;
                for (std::size_t const pair : plan.selected) {
                    ++times[pair];
                    auto const timing = timings.find(plan.pairs[pair].id);
                    seconds += timing == timings.end() ? 0 : timing->second;
                }
                if (isTimed) { // pairs without timing count there, too, by the mean of their format
                    EXPECT_LT(seconds, total / count + 9) << index << " of " << count << " has too much";
                }
            }
            EXPECT_EQ(ids.size(), times.size()) << count;
            for (auto const& [pair, number] : times)
                EXPECT_EQ(1, number) << pair << " of " << count;
        }
}

TEST(Expectations, MeetPairsUntilTheirDay) {
    MoDiffPlan const plan = planOf(kIds);
    MoDiffSuiteConfiguration configuration;
    configuration.expected = {{"html:r/Masters/*.html", "T-1", "2027-01-31", "f:1:1"},
                              {"html:**", "T-2", "", "f:2:1"},
                              {"html:r/Masters/[a].html", "T-3", "", "f:3:1"}};
    auto const reasons = [&](char const* today) {
        MoDiffExpectations const expectations(configuration, plan, today);
        Texts texts;
        for (MoDiffPair const& pair : plan.pairs) {
            std::string const* const reason = expectations.reasonFor(pair);
            texts.push_back(reason ? *reason : "");
        }
        return texts;
    };
    EXPECT_THAT(reasons("2027-01-30"), ElementsAre("", "T-1", "T-1", "T-2", ""));
    EXPECT_THAT(reasons("2027-01-31"), ElementsAre("", "T-2", "T-2", "T-2", ""));
    configuration.expected.push_back({"html:Old*", "T-4", "2020-01-01", "", "modiff.toml:9:1"});
    try {
        reasons("2027-01-31");
        ADD_FAILURE() << "not refused";
    } catch (MoDiffConfigurationError const& error) {
        EXPECT_STREQ("modiff.toml:9:1: the rule for html:Old* meets no pair", error.what());
    }
}

TEST(Expectations, TodayIsTheLocalDay) {
    ASSERT_EQ(0, setenv("TZ", "UTC-14", 1)); // ahead of UTC
    tzset();
    std::string const east = MoDiffExpectations::localDate();
    ASSERT_EQ(0, setenv("TZ", "UTC+11", 1)); // 25 hours behind that, always another day
    tzset();
    std::string const west = MoDiffExpectations::localDate();
    unsetenv("TZ");
    tzset();
    EXPECT_EQ(10U, east.size());
    EXPECT_LT(west, east);
}

} // namespace
