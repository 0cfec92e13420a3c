#include "MoDiffSelection.h"

#include "MoDiffNearestWord.h"
#include "MoDiffPathGlob.h"
#include "MoDiffShards.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace {

/// A filter, and whether it met anything.
struct Filter {
    explicit Filter(std::string const& text) : glob(text) {}
    bool meets(std::string const& id) const {
        return id.find(glob.getPattern()) != std::string::npos || glob.matches(id);
    }

    MoDiffPathGlob glob;
    bool isUsed = false;
};

void checkFormats(std::vector<std::string> const& formats) {
    std::vector<std::string> words;
    for (MoDiffFormatRow const& row : MoDiffFormatTable::rows())
        words.emplace_back(row.word);
    for (std::string const& format : formats)
        if (!MoDiffFormatTable::find(format))
            throw MoDiffSelectionError("there is no format " + format + MoDiffNearestWord::hint(format, words));
}

void checkShard(MoDiffSelection::Choice const& choice) {
    if (choice.shardIndex < 1 || choice.shardIndex > choice.shardCount)
        throw MoDiffSelectionError("there is no shard " + std::to_string(choice.shardIndex) + " of " +
                                   std::to_string(choice.shardCount) + "; they are counted from 1");
}

/// Tells whether some filter meets an id; every filter is asked, so that idle ones are found.
bool isMet(std::vector<Filter>& filters, std::string const& id) {
    bool result = filters.empty();
    for (Filter& filter : filters)
        if (filter.meets(id))
            result = filter.isUsed = true;
    return result;
}

bool hasFormat(std::vector<std::string> const& formats, MoDiffPair const& pair) {
    return formats.empty() || std::find(formats.begin(), formats.end(), pair.setup->format->word) != formats.end();
}

std::vector<std::size_t> filtered(MoDiffSelection::Choice const& choice, MoDiffPlan const& plan) {
    std::vector<Filter> filters(choice.filters.begin(), choice.filters.end());
    std::vector<std::size_t> chosen;
    for (std::size_t index = 0; index < plan.pairs.size(); ++index) {
        MoDiffPair const& pair = plan.pairs[index];
        bool const isFailed = !choice.ids || choice.ids->count(pair.id) != 0;
        if (isMet(filters, pair.id) && hasFormat(choice.formats, pair) && isFailed)
            chosen.push_back(index);
    }
    for (Filter const& filter : filters)
        if (!filter.isUsed)
            throw MoDiffSelectionError("the filter " + filter.glob.getPattern() + " meets no pair");
    return chosen;
}

void noteChosen(MoDiffPlan& plan) {
    std::vector<std::string_view> ids;
    for (std::size_t const index : plan.selected)
        ids.emplace_back(plan.pairs[index].id);
    plan.chosen = ids.size();
    plan.chosenDigest = MoDiffPlan::digestOf(ids);
}

} // namespace

std::vector<std::string> MoDiffSelection::apply(Choice const& choice, MoDiffPlan& plan) {
    checkFormats(choice.formats);
    checkShard(choice);
    plan.selected = filtered(choice, plan);
    noteChosen(plan);
    if (choice.shardCount > 1)
        plan.selected = MoDiffShards::part(plan, plan.selected, choice.shardIndex, choice.shardCount, choice.timings);
    std::vector<std::string> gone;
    for (std::string const& id : choice.ids.value_or(std::set<std::string>())) {
        auto const pair =
            std::lower_bound(plan.pairs.begin(), plan.pairs.end(), id,
                             [](MoDiffPair const& left, std::string const& right) { return left.id < right; });
        if (pair == plan.pairs.end() || pair->id != id)
            gone.push_back(id);
    }
    return gone;
}
