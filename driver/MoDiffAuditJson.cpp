#include "MoDiffAuditJson.h"

#include "MoDiffRecordText.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

Json nameJson(std::string const& bytes) {
    return Json::parse(MoDiffRecordText::quoted(bytes));
}

Json placeJson(MoDiffPlace const& place) {
    return {{"line", place.line}, {"column", place.column}};
}

Json amountsJson(MoDiffAudit::Amounts const& amounts) {
    Json list = Json::array();
    for (auto const& [name, amount] : amounts)
        list.push_back({{"name", nameJson(name)},
                        {"pairs", amount.pairs},
                        {"bytes", amount.bytes},
                        {"hidden", amount.hidden},
                        {"differ", amount.differing}});
    return list;
}

Json sideJson(std::string const& file, MoDiffPlace const& place, std::size_t bytes,
              MoDiffShownText::Excerpt const& excerpt) {
    Json side = placeJson(place);
    side["file"] = nameJson(file);
    side["bytes"] = bytes;
    side["excerpt"] = {{"before", excerpt.before}, {"after", excerpt.after}};
    return side;
}

Json differenceJson(MoDiffAudit::Difference const& difference) {
    Json places = Json::array();
    for (MoDiffAudit::Place const& place : difference.places)
        places.push_back({{"patterns", place.patterns},
                          {"master", sideJson(difference.files.master, place.first.master, place.bytes.master,
                                              place.excerpts.master)},
                          {"actual", sideJson(difference.files.actual, place.first.actual, place.bytes.actual,
                                              place.excerpts.actual)}});
    return {{"id", nameJson(difference.id)},
            {"bytes", difference.bytes},
            {"places", difference.gaps},
            {"carriage_returns", difference.returns},
            {"longest", places}};
}

Json restJson(MoDiffAudit::Rest const& rest) {
    Json json = placeJson(rest.place);
    json["id"] = nameJson(rest.id);
    json["file"] = nameJson(rest.file);
    json["pattern"] = rest.pattern;
    json["bytes"] = rest.bytes;
    json["file_bytes"] = rest.fileBytes;
    json["to_end"] = rest.isAtEnd;
    return json;
}

Json mutationsJson(MoDiffMutations::Outcomes const& outcomes) {
    Json list = Json::array();
    for (auto const& [format, outcome] : outcomes)
        list.push_back({{"format", format},
                        {"changed", outcome.made - outcome.unmeasured},
                        {"noticed", outcome.noticed},
                        {"unmeasured", outcome.unmeasured},
                        {"hidden_by", outcome.unnoticed}});
    return list;
}

} // namespace

std::string MoDiffAuditJson::text(MoDiffAudit const& audit, MoDiffMutations::Outcomes const* mutations,
                                  std::vector<std::string> const& changed) {
    Json json = {{"formats", amountsJson(audit.formats())},
                 {"folders", amountsJson(audit.folders())},
                 {"patterns", amountsJson(audit.patterns())},
                 {"differences", Json::array()},
                 {"rests", Json::array()},
                 {"left_out", Json::array()}};
    for (MoDiffAudit::Difference const& difference : audit.differences())
        json["differences"].push_back(differenceJson(difference));
    for (MoDiffAudit::Rest const& rest : audit.rests())
        json["rests"].push_back(restJson(rest));
    for (MoDiffAudit::Omission const& omission : audit.omissions())
        json["left_out"].push_back({{"id", nameJson(omission.id)}, {"reason", nameJson(omission.reason)}});
    for (std::string const& id : changed)
        json["left_out"].push_back({{"id", nameJson(id)}, {"reason", "the master changed since the run"}});
    if (mutations)
        json["mutations"] = mutationsJson(*mutations);
    return json.dump() + "\n";
}
