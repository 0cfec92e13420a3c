#include "MoDiffConfigurationReader.h"

#include "MoDiffDirectory.h"
#include "MoDiffFormatTable.h"
#include "MoDiffNearestWord.h"
#include "MoDiffSetting.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>
#include <thread>
#include <toml++/toml.h>

namespace fs = std::filesystem;

char const MoDiffConfigurationReader::kFileName[] = "modiff.toml";

namespace {

using Configuration = MoDiffSuiteConfiguration;
using Value = MoDiffConfigurationValue;

/// Reads one file into a configuration that holds the defaults.
class FileReader {
public:
    explicit FileReader(Configuration& configuration) : m_configuration(configuration) {}

    void read();

private:
    std::string place(toml::source_region const& source) const;
    [[noreturn]] void fail(toml::source_region const& source, std::string const& what) const;
    Value valueOf(std::string const& key, toml::node const& node) const;
    Value::List listOf(std::string const& key, toml::array const& array) const;
    void take(toml::key const& key, toml::node const& node);
    template<typename Row, typename Fields>
    void takeTables(std::string const& key, toml::node const& node, std::vector<Row>& rows, Fields const& fields);
    template<typename Row, typename Fields>
    Row rowOf(std::string const& key, toml::table const& table, Fields const& fields);

    Configuration& m_configuration;
};

std::string contentsOf(std::string const& file) {
    std::error_code ignored;
    errno = fs::is_directory(file, ignored) ? EISDIR : 0;
    std::ifstream in;
    if (errno == 0)
        in.open(file, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(in)), {});
    if (!in.is_open() || in.bad())
        throw MoDiffConfigurationError(file + ": cannot be read: " + std::generic_category().message(errno));
    return text;
}

std::string FileReader::place(toml::source_region const& source) const {
    return m_configuration.file + ":" + std::to_string(source.begin.line) + ":" + std::to_string(source.begin.column);
}

void FileReader::fail(toml::source_region const& source, std::string const& what) const {
    throw MoDiffConfigurationError(place(source) + ": " + what);
}

void FileReader::read() {
    std::string const text = contentsOf(m_configuration.file);
    try {
        toml::table const table = toml::parse(text, m_configuration.file);
        for (auto const& [key, node] : table)
            take(key, node);
    } catch (toml::parse_error const& error) {
        fail(error.source(), std::string(error.description()));
    }
}

std::string textOf(toml::date const& date) {
    std::ostringstream text;
    text << date;
    return text.str();
}

Value::List FileReader::listOf(std::string const& key, toml::array const& array) const {
    Value::List entries;
    for (toml::node const& entry : array)
        entries.push_back(valueOf(key, entry));
    return entries;
}

Value FileReader::valueOf(std::string const& key, toml::node const& node) const {
    Value::Content content = Value::Other{node.is_table() ? "a table" : "a point in time"};
    if (auto const* const text = node.as_string())
        content = text->get();
    else if (auto const* const whole = node.as_integer())
        content = whole->get();
    else if (auto const* const real = node.as_floating_point())
        content = real->get();
    else if (auto const* const truth = node.as_boolean())
        content = truth->get();
    else if (auto const* const date = node.as_date())
        content = Value::Date{textOf(date->get())};
    else if (auto const* const array = node.as_array())
        content = listOf(key, *array);
    return {key, place(node.source()), std::move(content)};
}

template<typename Row, typename Fields>
Row FileReader::rowOf(std::string const& key, toml::table const& table, Fields const& fields) {
    Row row;
    row.place = place(table.source());
    std::vector<std::string> words;
    words.reserve(std::size(fields));
    for (auto const& field : fields)
        words.emplace_back(field.key);
    for (auto const& [name, node] : table) {
        auto const field = std::find_if(fields.begin(), fields.end(), [&name = name](auto const& candidate) {
            return candidate.key == name.str();
        });
        std::string const word(name.str());
        if (field == fields.end())
            fail(name.source(), std::string("[[")
                                    .append(key)
                                    .append("]] has no key ")
                                    .append(word)
                                    .append(MoDiffNearestWord::hint(word, words)));
        row.*field->member = field->read(valueOf(word, node));
        if (field->place)
            row.*field->place = place(node.source());
    }
    for (auto const& field : fields)
        if (field.isRequired && (row.*field.member).empty())
            fail(table.source(), "[[" + key + "]] lacks the key " + field.key);
    return row;
}

template<typename Row, typename Fields>
void FileReader::takeTables(std::string const& key, toml::node const& node, std::vector<Row>& rows,
                            Fields const& fields) {
    std::string const rule = key + " must be a list of tables; begin each with [[" + key + "]]";
    toml::array const* const tables = node.as_array();
    if (!tables)
        fail(node.source(), rule);
    for (toml::node const& entry : *tables) {
        if (!entry.is_table())
            fail(entry.source(), rule);
        rows.push_back(rowOf<Row>(key, *entry.as_table(), fields));
    }
}

void FileReader::take(toml::key const& key, toml::node const& node) {
    std::string const word(key.str());
    std::vector<std::string> words;
    bool isTable = false;
    MoDiffTables::visit(m_configuration, [&](char const* name, auto& rows, auto const& fields) {
        words.emplace_back(name);
        if (word == name) {
            takeTables(word, node, rows, fields);
            isTable = true;
        }
    });
    if (isTable)
        return;
    if (MoDiffSetting const* const setting = MoDiffSetting::find(word)) {
        Value const value = valueOf(word, node);
        setting->set(m_configuration, value);
        m_configuration.origins[word] = value.getPlace();
        return;
    }
    for (MoDiffSetting const& setting : MoDiffSetting::all())
        words.emplace_back(setting.key);
    fail(key.source(), "there is no key " + word + MoDiffNearestWord::hint(word, words));
}

bool hasTable(Configuration const& configuration, MoDiffFormatRow const& row) {
    return !(row.takesSuffix ? configuration.charts : configuration.properties).empty();
}

/// Puts the formats into the order of the table, each once.
void resolveFormats(Configuration& configuration) {
    std::vector<std::string> formats;
    for (MoDiffFormatRow const& row : MoDiffFormatTable::rows()) {
        bool const isReady = !row.takesDirectories || hasTable(configuration, row);
        auto const& named = configuration.formats;
        bool const isNamed = std::find(named.begin(), named.end(), row.word) != named.end();
        if (isNamed && !isReady)
            throw MoDiffConfigurationError(configuration.origins["formats"] + ": the format " + row.word +
                                           " needs a table [[" + row.word + "]] in the configuration file");
        if (isNamed || (named.empty() && isReady))
            formats.emplace_back(row.word);
    }
    configuration.formats = std::move(formats);
}

} // namespace

std::string MoDiffConfigurationReader::find(std::string const& directory) {
    fs::path place = fs::canonical(MoDiffDirectory::current() / fs::path(directory));
    for (;; place = place.parent_path()) {
        std::error_code unreadable; // what may not be looked at is passed over
        if (fs::exists(place / kFileName, unreadable))
            return (place / kFileName).string();
        if (place == place.root_path())
            return "";
    }
}

MoDiffSuiteConfiguration MoDiffConfigurationReader::read(std::string const& file) {
    Configuration configuration;
    configuration.file = file;
    fs::path const here = MoDiffDirectory::current();
    configuration.workingDirectory = file.empty() ? here.string() : (here / file).parent_path().string();
    configuration.jobs = std::max(1U, std::thread::hardware_concurrency());
    for (MoDiffSetting const& setting : MoDiffSetting::all())
        configuration.origins[setting.key] = "default";
    if (!file.empty())
        FileReader(configuration).read();
    return configuration;
}

void MoDiffConfigurationReader::setOption(MoDiffSuiteConfiguration& configuration, std::string const& key,
                                          std::vector<std::string> const& values, std::string const& option) {
    MoDiffSetting const* const setting = MoDiffSetting::find(key);
    if (!setting)
        throw std::logic_error("there is no setting " + key);
    setting->set(configuration, Value::ofOption(key, option, values));
    configuration.origins[key] = option;
}

void MoDiffConfigurationReader::resolve(MoDiffSuiteConfiguration& configuration) {
    resolveFormats(configuration);
}
