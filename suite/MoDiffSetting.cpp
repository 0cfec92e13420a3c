#include "MoDiffSetting.h"

#include "MoDiffFormatTable.h"
#include "MoDiffIgnoredKinds.h"
#include "MoDiffNearestWord.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <utility>

namespace fs = std::filesystem;

namespace {

using Configuration = MoDiffSuiteConfiguration;
using Value = MoDiffConfigurationValue;
using Quote = MoDiffSetting::Quote;

unsigned constexpr kMostJobs = 1024;
double constexpr kMostQuantity = 9e15;

/// Workers count milliseconds in 32 bits, which are 49 days.
Value::Range const kTimeLimits = {100, 30 * 86400e3, "a duration from \"100ms\" to \"30d\""};
Value::Range const kMemoryLimits = {1 << 24, kMostQuantity, "a size of \"16MiB\" at least"};
Value::Range const kAges = {1000, kMostQuantity, "a duration of \"1s\" at least"};

std::vector<std::string> const& newFilesWords() {
    static std::vector<std::string> const words = {"fail", "warn", "ignore"}; // as MoDiffSuiteConfiguration::NewFiles
    return words;
}

std::vector<std::string> const& nulWords() {
    static std::vector<std::string> const words = {"error", "warn"}; // as MoDiffSuiteConfiguration::NulRule
    return words;
}

std::vector<std::string> formatWords() {
    std::vector<std::string> words;
    for (MoDiffFormatRow const& row : MoDiffFormatTable::rows())
        words.emplace_back(row.word);
    return words;
}

/// The kinds of differences that a format's script can leave out.
std::vector<std::string> kindsOf(std::string const& format) {
    std::vector<std::string> kinds;
    for (std::string const& kind : MoDiffIgnoredKinds::all())
        if (kind.compare(0, format.size() + 1, format + ":") == 0)
            kinds.push_back(kind.substr(format.size() + 1));
    return kinds;
}

std::vector<std::string> formatsWithKinds() {
    std::vector<std::string> words = formatWords();
    words.erase(std::remove_if(words.begin(), words.end(), [](auto const& word) { return kindsOf(word).empty(); }),
                words.end());
    return words;
}

std::string list(std::vector<std::string> const& texts, Quote quote) {
    std::string shown;
    for (std::string const& text : texts)
        shown.append(shown.empty() ? "" : ", ").append(quote(text));
    return "[" + shown + "]";
}

/// A number in the greatest of some units of which it is a multiple.
std::string inUnits(std::uint64_t number, std::vector<std::pair<std::uint64_t, char const*>> const& units) {
    if (number == 0)
        return "\"none\"";
    auto const unit = std::find_if(units.begin(), units.end(),
                                   [number](auto const& candidate) { return number % candidate.first == 0; });
    return '"' + std::to_string(number / unit->first) + unit->second + '"';
}

std::string size(std::uint64_t bytes) {
    return inUnits(bytes, {{std::uint64_t{1} << 30, "GiB"}, {1U << 20, "MiB"}, {1U << 10, "KiB"}, {1, "B"}});
}

std::string duration(std::chrono::milliseconds time) {
    return inUnits(static_cast<std::uint64_t>(time.count()),
                   {{86400000, "d"}, {3600000, "h"}, {60000, "m"}, {1000, "s"}, {1, "ms"}});
}

void setWorkingDirectory(Configuration& configuration, Value const& value) {
    fs::path const base = value.isOption() ? fs::path() : fs::path(configuration.file).parent_path();
    configuration.workingDirectory = fs::absolute(base / value.name()).lexically_normal().string();
}

std::vector<std::string> pathsBelow(Value const& value) {
    std::vector<std::string> paths;
    for (Value const& entry : value.entries())
        paths.push_back(entry.pathBelow());
    return paths;
}

void setExclude(Configuration& configuration, Value const& value) {
    configuration.exclude.clear();
    for (Value const& entry : value.entries())
        configuration.exclude.push_back({entry.pathBelow(), entry.getPlace()});
}

std::string showExclude(Configuration const& configuration, Quote quote) {
    std::vector<std::string> globs;
    for (MoDiffExclude const& rule : configuration.exclude)
        globs.push_back(rule.glob);
    return list(globs, quote);
}

void setFormats(Configuration& configuration, Value const& value) {
    std::vector<std::string> const words = formatWords();
    configuration.formats.clear();
    for (Value const& entry : value.entries())
        configuration.formats.push_back(words[entry.word(words)]);
    if (configuration.formats.empty())
        value.fail("formats must name one at least");
}

std::string ignoredKind(Value const& entry) {
    std::string const& text = entry.text();
    std::size_t const colon = text.find(':');
    std::string const format = text.substr(0, colon);
    Value("ignore", entry.getPlace(), format).word(formatsWithKinds());
    if (colon == std::string::npos)
        entry.fail("ignore wants a format and a kind of difference, such as \"xlsx:filters\", not \"" + text + '"');
    std::string const kind = text.substr(colon + 1);
    std::vector<std::string> const kinds = kindsOf(format);
    if (std::find(kinds.begin(), kinds.end(), kind) == kinds.end())
        entry.fail("ignore: " + format + " has no kind \"" + kind + '"' + MoDiffNearestWord::hint(kind, kinds));
    return text;
}

void setIgnore(Configuration& configuration, Value const& value) {
    configuration.ignore.clear();
    for (Value const& entry : value.entries())
        configuration.ignore.push_back(ignoredKind(entry));
}

void setMaxAge(Configuration& configuration, Value const& value) {
    configuration.maxAge.reset();
    if (!value.isNone())
        configuration.maxAge = std::chrono::duration_cast<std::chrono::seconds>(value.duration(kAges));
}

std::string showSubDirectories(Configuration const& configuration, Quote quote) {
    return configuration.subDirectories ? list(*configuration.subDirectories, quote) : "";
}

std::string showHiddenWarning(Configuration const& configuration, Quote) {
    std::string text = std::to_string(configuration.hiddenWarning);
    text.erase(text.find_last_not_of('0') + 1);
    return text.back() == '.' ? text.substr(0, text.size() - 1) : text;
}

std::string readName(Value const& value) {
    return value.name();
}

std::string readDate(Value const& value) {
    return value.date();
}

std::string readPathBelow(Value const& value) {
    return value.pathBelow();
}

/// The engine's glob would take a wildcard for one, and a "/" for a folder.
std::string readSuffix(Value const& value) {
    if (value.text().find_first_of("*/") != std::string::npos)
        value.fail(R"(master-suffix must hold neither "*" nor "/")");
    return value.text();
}

} // namespace

std::vector<MoDiffSetting> const& MoDiffSetting::all() {
    using C = Configuration;
    static std::vector<MoDiffSetting> const settings = {
        {"working-directory", "a path; relative ones are seen from the file",
         "Where ../webcontent is seen from. Without it, the directory of the file.", setWorkingDirectory,
         [](C const& c, Quote quote) { return quote(c.workingDirectory); }},
        {"roots", R"(list of relative paths without "..")",
         R"(Directories below the working directory that are searched for folders "Masters". Without it, all of them.)",
         [](C& c, Value const& value) { c.roots = pathsBelow(value); },
         [](C const& c, Quote quote) { return list(c.roots, quote); }},
        {"exclude", "list of globs", "Directories and masters to leave out, seen from the working directory.",
         setExclude, showExclude},
        {"formats", "list of words of modiff formats",
         "Formats to compare. Without it, all that need no table, and tvd and prp with a table.", setFormats,
         [](C const& c, Quote quote) { return list(c.formats, quote); }},
        {"sub-directories", R"(list of relative paths without "..")",
         R"(Folders of Masters to compare, languages, say; "" stands for Masters itself. Without it, those that are found.)",
         [](C& c, Value const& value) { c.subDirectories = pathsBelow(value); }, showSubDirectories},
        {"jobs", "1 to 1024", "Processes that compare at the same time. Without it, as many as there are processors.",
         [](C& c, Value const& value) { c.jobs = value.count(1, kMostJobs); },
         [](C const& c, Quote) { return std::to_string(c.jobs); }},
        {"time-limit", R"("500ms", "60s", "5m", "12h", "1d" or "none")",
         "Longest time for one pair, by the wall clock.",
         [](C& c, Value const& value) { c.timeLimit = value.duration(kTimeLimits); },
         [](C const& c, Quote) { return duration(c.timeLimit); }},
        {"memory-limit", R"("512MB", "2GiB" or "none")", "Most memory for the process of one pair.",
         [](C& c, Value const& value) { c.memoryLimit = value.size(kMemoryLimits); },
         [](C const& c, Quote) { return size(c.memoryLimit); }},
        {"max-age", "a time as for time-limit", "Age from which on an actual file is warned of.", setMaxAge,
         [](C const& c, Quote) { return c.maxAge ? duration(*c.maxAge) : std::string("\"none\""); }},
        {"new", R"("fail", "warn" or "ignore")", "What becomes of actual files without a master.",
         [](C& c, Value const& value) { c.newFiles = C::NewFiles(value.word(newFilesWords())); },
         [](C const& c, Quote quote) { return quote(newFilesWords()[c.newFiles]); }},
        {"nul", R"("error" or "warn")", "What becomes of texts that hold a NUL and are not the same bytes.",
         [](C& c, Value const& value) { c.nul = C::NulRule(value.word(nulWords())); },
         [](C const& c, Quote quote) { return quote(nulWords()[c.nul]); }},
        {"ignore", R"(list of "FORMAT:KIND")",
         R"(Kinds of differences that the scripts leave out, such as "xlsx:filters".)", setIgnore,
         [](C const& c, Quote quote) { return list(c.ignore, quote); }},
        {"hidden-warning", "0 to 100",
         "Per cent of a text deleted by cleansing, from which on a passed pair is warned of.",
         [](C& c, Value const& value) { c.hiddenWarning = value.percent(); }, showHiddenWarning},
    };
    return settings;
}

MoDiffSetting const* MoDiffSetting::find(std::string_view key) {
    auto const setting = std::find_if(all().begin(), all().end(),
                                      [key](MoDiffSetting const& candidate) { return candidate.key == key; });
    return setting == all().end() ? nullptr : &*setting;
}

using Folder = MoDiffConfiguredFolder;
using Expected = MoDiffExpectedDifference;

std::vector<MoDiffTableField<Folder>> const MoDiffTables::kChart = {
    {"type-name", R"(Name of the output directory, such as "v5DebugTVD".)", &Folder::typeName, true, readName},
    {"master-sub-directory", "Folder below Masters.", &Folder::masterSubDirectory, false, readPathBelow},
    {"master-suffix", R"(What follows "_" at the end of the masters' names, without the extension.)",
     &Folder::masterSuffix, false, readSuffix}};
std::vector<MoDiffTableField<Folder>> const MoDiffTables::kProperty = {
    {"type-name", R"(Name of the output directory, such as "v5DebugPRP".)", &Folder::typeName, true, readName},
    {"master-sub-directory", "Folder below Masters.", &Folder::masterSubDirectory, false, readPathBelow}};
std::vector<MoDiffTableField<Expected>> const MoDiffTables::kExpected = {
    {"pair", "Glob for the ids of pairs that are expected to be different or missing.", &Expected::pair, true,
     readName, &Expected::pairPlace},
    {"reason", "Why, such as the name of a ticket.", &Expected::reason, true, readName},
    {"until", "Date from which on, by the local calendar, the difference fails again.", &Expected::until, false,
     readDate}};
