#include "MoDiffConfigurationText.h"

#include "MoDiffSetting.h"
#include "MoDiffShownText.h"
#include "MoDiffTomlText.h"

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

std::size_t constexpr kColumns = 100;

char const kHead[] =
    R"(# What `modiff run` compares, and how; `modiff run --list` shows the pairs. A key that stands behind "#" shows what
# holds without it.
)";
char const kExpected[] = R"(
# Differences that are known and have a ticket: they fail again from a day on.
#
# [[expected]]
# pair = "html:reports/sales/Masters/Old*.html"
# reason = "TRACK-42"
# until = 2027-01-31
)";

/// A text as a comment of several lines.
std::string commented(std::string const& text) {
    std::string lines = "#";
    std::size_t columns = lines.size();
    for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
        end = std::min(text.find(' ', begin), text.size());
        if (columns + 1 + end - begin > kColumns) {
            lines += "\n#";
            columns = 1;
        }
        lines += " " + text.substr(begin, end - begin);
        columns += 1 + end - begin;
    }
    return lines + "\n";
}

/// A string of TOML; raises when it would not come back as it is.
std::string exactlyQuoted(std::string_view text) {
    if (!MoDiffTomlText::canHold(text))
        throw MoDiffConfigurationError("no configuration file can hold the name " + std::string(text) +
                                       ", which is not UTF-8");
    return MoDiffTomlText::quoted(text);
}

template<typename Texts>
std::string listOf(Texts const& texts) {
    std::string list;
    for (std::string const& text : texts)
        list.append(list.empty() ? "" : ", ").append(MoDiffTomlText::quoted(text));
    return "[" + list + "]";
}

class Writer {
public:
    Writer(MoDiffSurvey const& survey, std::string const& directory);

    std::string write();

private:
    void addSetting(MoDiffSetting const& setting);
    std::string foundFor(std::string const& key) const;
    void addTable(MoDiffFolderSearch::Table const& table);
    void addField(char const* key, std::string const& value);

    MoDiffSurvey const& m_survey;
    MoDiffSuiteConfiguration m_configuration; ///< whose working directory is as it is to be written
    std::string m_text;
};

Writer::Writer(MoDiffSurvey const& survey, std::string const& directory)
    : m_survey(survey), m_configuration(survey.configuration) {
    m_configuration.workingDirectory =
        fs::path(survey.configuration.workingDirectory).lexically_relative(directory).string();
}

std::string Writer::write() {
    m_text = kHead;
    for (MoDiffSetting const& setting : MoDiffSetting::all())
        addSetting(setting);
    for (MoDiffFolderSearch::Table const& table : m_survey.tables)
        addTable(table);
    return m_text + kExpected;
}

/// What was found of a key whose default leaves it open; "" for another key.
std::string Writer::foundFor(std::string const& key) const {
    if (key == "roots")
        return listOf(m_survey.roots);
    if (key == "sub-directories")
        return listOf(m_survey.subDirectories);
    if (key != "formats")
        return "";
    std::vector<std::string> words;
    for (MoDiffSurvey::Format const& format : m_survey.formats)
        words.emplace_back(format.row->word);
    return listOf(words);
}

void Writer::addSetting(MoDiffSetting const& setting) {
    std::string const key = setting.key;
    bool const isDefault = key == "working-directory" ? m_configuration.workingDirectory == "."
                                                      : m_configuration.origins.at(key) == "default";
    std::string const found = isDefault ? foundFor(key) : "";
    m_text += "\n" + commented(std::string(setting.about) + " Values: " + setting.values + "." +
                               (found.empty() ? "" : " Those with masters today:"));
    std::string const value =
        found.empty() ? setting.show(m_configuration, isDefault ? MoDiffTomlText::quoted : exactlyQuoted) : found;
    m_text += (isDefault ? "# " : "") + key + " = " + value + "\n";
}

void Writer::addTable(MoDiffFolderSearch::Table const& table) {
    bool const isChart = table.format->takesSuffix;
    std::string about = isChart ? "Charts" : "Properties";
    about += table.folder.masterSubDirectory.empty()
                 ? " in Masters"
                 : " in the folder " + MoDiffShownText::escaped(table.folder.masterSubDirectory) + " of Masters";
    about += " and their output directory.";
    if (table.isGuess)
        about += " That is a guess: none holds files of these names.";
    m_text += "\n" + commented(about) + "[[" + table.format->word + "]]\n";
    for (auto const& field : isChart ? MoDiffTables::kChart : MoDiffTables::kProperty)
        addField(field.key, table.folder.*field.member);
}

void Writer::addField(char const* key, std::string const& value) {
    if (!value.empty())
        m_text += std::string(key) + " = " + exactlyQuoted(value) + "\n";
}

} // namespace

std::string MoDiffConfigurationText::of(MoDiffSurvey const& survey, std::string const& directory) {
    return Writer(survey, directory).write();
}
