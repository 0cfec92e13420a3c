#include "MoDiffOptionTable.h"

#include "MoDiffFormatTable.h"
#include "MoDiffRecordText.h"
#include "MoDiffSetting.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <ostream>

namespace {

using Json = nlohmann::ordered_json;

/// "none", "optional" or "required".
char const* valueOf(CLI::Option const& option) {
    if (!option.get_fnames().empty()) // a flag that takes a number, too
        return "optional";
    if (option.get_items_expected_max() == 0)
        return "none";
    return option.get_items_expected_min() == 0 ? "optional" : "required";
}

/// What the value is called, without the range that is checked.
std::string argumentOf(CLI::Option const& option) {
    if (option.get_positional())
        return option.get_name(/*positional=*/true);
    std::string type = option.get_type_name();
    std::size_t const range = type.find(" in [");
    if (range == std::string::npos)
        return type;
    std::string const name = type.substr(0, type.rfind(':', range));
    return name.empty() ? "N" : name;
}

Json namesOf(CLI::Option const& option) {
    Json names = Json::array();
    for (std::string const& name : option.get_snames())
        names.push_back("-" + name);
    for (std::string const& name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

Json describe(CLI::Option const& option) {
    bool const takesAll = option.get_multi_option_policy() != CLI::MultiOptionPolicy::TakeLast;
    return {{"names", namesOf(option)},
            {"argument", argumentOf(option)},
            {"value", valueOf(option)},
            {"required", option.get_required()},
            {"repeatable", takesAll && option.get_items_expected_max() > 1},
            {"group", option.get_group()},
            {"about", option.get_description()}};
}

Json describe(CLI::App const& app) {
    Json description = {{"name", app.get_name()},
                        {"about", app.get_description()},
                        {"footer", app.get_footer()},
                        {"options", Json::array()},
                        {"positionals", Json::array()}};
    for (CLI::Option const* const option : app.get_options())
        description[option->get_positional() ? "positionals" : "options"].push_back(describe(*option));
    return description;
}

/// Defaults that depend on machine and place are left out; the sentence about a key tells them.
Json describeSettings() {
    MoDiffSuiteConfiguration const defaults;
    Json settings = Json::array();
    for (MoDiffSetting const& setting : MoDiffSetting::all())
        settings.push_back({{"key", setting.key},
                            {"values", setting.values},
                            {"default", setting.show(defaults, MoDiffRecordText::quoted)},
                            {"about", setting.about}});
    return settings;
}

Json describeTables() {
    MoDiffSuiteConfiguration defaults;
    Json tables = Json::array();
    MoDiffTables::visit(defaults, [&](char const* key, auto const&, auto const& fields) {
        Json keys = Json::array();
        for (auto const& field : fields)
            keys.push_back({{"key", field.key}, {"required", field.isRequired}, {"about", field.about}});
        tables.push_back({{"key", key}, {"keys", keys}});
    });
    return tables;
}

Json describeFormats() {
    Json formats = Json::array();
    for (MoDiffFormatRow const& row : MoDiffFormatTable::rows())
        formats.push_back({{"word", row.word}, {"comparison", MoDiffFormatTable::comparisonWords(row)}});
    return formats;
}

} // namespace

void MoDiffOptionTable::print(CLI::App const& app, std::ostream& out) {
    Json table = describe(app);
    table["version"] = MODIFF_VERSION;
    table["commands"] = Json::array();
    for (CLI::App const* const command : app.get_subcommands([](CLI::App const*) { return true; }))
        table["commands"].push_back(describe(*command));
    table["settings"] = describeSettings();
    table["tables"] = describeTables();
    table["formats"] = describeFormats();
    out << table.dump(1) << '\n';
}
