#include "MoDiffSuiteConfiguration.h"

#include "MoDiffRecordText.h"
#include "MoDiffSetting.h"
#include "MoDiffTomlText.h"

#include <string_view>

namespace {

std::string withOrigin(std::string const& line, std::string const& origin) {
    return line + "  # " + origin;
}

/// The fields of a table that hold something, as a JSON object.
template<typename Row, typename Fields>
std::string objectOf(Row const& row, Fields const& fields) {
    std::string object;
    for (auto const& field : fields) {
        std::string const& text = row.*field.member;
        if (!text.empty())
            object.append(object.empty() ? "" : ",")
                .append(MoDiffRecordText::quoted(field.key) + ":" + MoDiffRecordText::quoted(text));
    }
    return "{" + object + "}";
}

} // namespace

bool MoDiffSuiteConfiguration::isNarrowedByOption() const {
    auto const isOption = [this](char const* key) {
        auto const origin = origins.find(key);
        return origin != origins.end() && origin->second.rfind("--", 0) == 0;
    };
    return isOption("roots") || isOption("exclude") || isOption("sub-directories");
}

std::vector<std::string> MoDiffSuiteConfiguration::describe() const {
    std::vector<std::string> lines;
    for (MoDiffSetting const& setting : MoDiffSetting::all()) {
        std::string const value = setting.show(*this, MoDiffTomlText::quoted);
        std::string const line = value.empty() ? std::string("# ") + setting.key + ": those that are found"
                                               : std::string(setting.key) + " = " + value;
        lines.push_back(withOrigin(line, origins.at(setting.key)));
    }
    MoDiffTables::visit(*this, [&lines](char const* key, auto const& rows, auto const& fields) {
        for (auto const& row : rows) {
            lines.push_back(withOrigin(std::string("[[") + key + "]]", row.place));
            for (auto const& field : fields) {
                std::string const& text = row.*field.member;
                bool const isDate = std::string_view(field.key) == "until";
                if (!text.empty())
                    lines.push_back(std::string(field.key) + " = " + (isDate ? text : MoDiffTomlText::quoted(text)));
            }
        }
    });
    return lines;
}

std::string MoDiffSuiteConfiguration::toJson() const {
    std::string json;
    auto const add = [&json](char const* key, std::string const& value) {
        json.append(json.empty() ? "" : ",").append(MoDiffRecordText::quoted(key)).append(":");
        json.append(value.empty() ? "null" : value);
    };
    add("file", MoDiffRecordText::quoted(file));
    for (MoDiffSetting const& setting : MoDiffSetting::all())
        add(setting.key, setting.show(*this, MoDiffRecordText::quoted));
    MoDiffTables::visit(*this, [&add](char const* key, auto const& rows, auto const& fields) {
        std::string list;
        for (auto const& row : rows)
            list.append(list.empty() ? "" : ",").append(objectOf(row, fields));
        add(key, "[" + list + "]");
    });
    return "{" + json + "}";
}
