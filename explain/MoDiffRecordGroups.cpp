#include "MoDiffRecordGroups.h"

#include "MoDiffOutputFile.h"
#include "MoDiffRecordText.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <system_error>

namespace {

using MoDiffRecordText::bytesOf;
using nlohmann::json;

char const kFileName[] = "/groups.jsonl";

/// What a pair is told by that has no changes of texts.
MoDiffSignature::Difference differenceOf(std::string const& words) {
    std::string const signature = MoDiffSignature::ofBytes(words);
    return {{{signature, words, 1}}, signature};
}

MoDiffSignature::Difference findDifference(MoDiffPairResult const& pair, MoDiffPairSetups& setups) {
    if (!MoDiffRecordGroups::isExplained(pair))
        return differenceOf(wordOf(pair.outcome) + (pair.detail.empty() ? "" : ": " + pair.detail));
    if (MoDiffRecordPairs::isDealtWith(pair))
        return differenceOf("accepted since the run");
    if (!MoDiffRecordPairs::isUnchanged(pair))
        return differenceOf("changed since the run");
    try {
        MoDiffPairExplanation const explanation = MoDiffRecordGroups::explain(pair, setups, {});
        return {explanation.kinds(), explanation.signature()};
    } catch (std::exception const& error) {
        return differenceOf(std::string("cannot be explained: ") + error.what());
    }
}

std::string lineOf(std::string const& id, MoDiffSignature::Difference const& difference) {
    std::string list;
    for (MoDiffChangeKind const& kind : difference.kinds)
        list += (list.empty() ? "{\"signature\":" : ",{\"signature\":") + MoDiffRecordText::quoted(kind.signature) +
                ",\"title\":" + MoDiffRecordText::quoted(kind.title) + ",\"places\":" + std::to_string(kind.places) +
                "}";
    return "{\"pair\":" + MoDiffRecordText::quoted(id) +
           ",\"signature\":" + MoDiffRecordText::quoted(difference.signature) + ",\"kinds\":[" + list + "]}\n";
}

std::string headerOf(MoDiffRecordPairs const& record) {
    return "{\"record\":" + MoDiffRecordText::quoted(record.hash()) + "}";
}

void addLine(std::string const& line, MoDiffGroups& groups) {
    json const object = json::parse(line);
    std::vector<MoDiffChangeKind> kinds;
    for (json const& kind : object.at("kinds"))
        kinds.push_back({bytesOf(kind.at("signature").get_ref<std::string const&>()),
                         bytesOf(kind.at("title").get_ref<std::string const&>()), kind.at("places")});
    groups.add(bytesOf(object.at("pair").get_ref<std::string const&>()),
               bytesOf(object.at("signature").get_ref<std::string const&>()), kinds);
}

/// The groups that are kept; none when they belong to another record or cannot be read.
std::optional<MoDiffGroups> readKept(MoDiffRecordPairs const& record) {
    std::ifstream file(record.directory() + kFileName, std::ios::binary);
    std::string line;
    if (!std::getline(file, line) || line != headerOf(record))
        return std::nullopt;
    try {
        MoDiffGroups groups;
        while (std::getline(file, line))
            addLine(line, groups);
        return groups;
    } catch (std::exception const&) {
        return std::nullopt;
    }
}

} // namespace

MoDiffGroups MoDiffRecordGroups::find(MoDiffRecordPairs const& record, MoDiffPairSetups& setups,
                                      Progress const& progress) {
    if (std::optional<MoDiffGroups> kept = readKept(record))
        return std::move(*kept);
    std::vector<MoDiffPairResult const*> failed;
    for (MoDiffPairResult const& pair : record.pairs())
        if (isFailure(pair.outcome))
            failed.push_back(&pair);
    MoDiffGroups groups;
    std::string lines = headerOf(record) + "\n";
    for (std::size_t index = 0; index < failed.size(); ++index) {
        progress(index, failed.size(), failed[index]->id);
        MoDiffSignature::Difference const difference = findDifference(*failed[index], setups);
        groups.add(failed[index]->id, difference.signature, difference.kinds);
        lines += lineOf(failed[index]->id, difference);
    }
    try {
        MoDiffOutputFile::replace(record.directory() + kFileName, lines, 0644);
    } catch (std::system_error const&) { // found again next time
    }
    return groups;
}

MoDiffPairExplanation MoDiffRecordGroups::explain(MoDiffPairResult const& pair, MoDiffPairSetups& setups,
                                                  MoDiffPairExplanation::Options const& options) {
    MoDiffEngineSetup const* const setup = setups.find(pair);
    if (!setup)
        throw std::runtime_error("no format of the configuration has the pair " + pair.id);
    return MoDiffPairExplanation::explain(*setup->format, setup->settings, pair.master, pair.actual, pair.output,
                                          options);
}

bool MoDiffRecordGroups::isExplained(MoDiffPairResult const& pair) {
    bool const isDifferent = pair.outcome == MoDiffOutcome::eDifferent || pair.outcome == MoDiffOutcome::eExpected;
    return isDifferent && !pair.hash.actual.empty() && !pair.hash.master.empty();
}
