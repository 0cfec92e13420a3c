#include "MoDiffRecord.h"

#include "MoDiffRecordText.h"

#include <cstdio>
#include <nlohmann/json.hpp>

char const MoDiffRecord::kFileName[] = "run.jsonl";

namespace {

using MoDiffRecordText::appendQuoted;
using MoDiffRecordText::bytesOf;
using nlohmann::json;

/// Builds one JSON object.
class ObjectWriter {
public:
    explicit ObjectWriter(std::string& text) : m_text(text) { m_text += '{'; }

    /// Begins a member; its value is to be appended.
    std::string& key(char const* name) {
        m_text.append(m_isEmpty ? "\"" : ",\"").append(name).append("\":");
        m_isEmpty = false;
        return m_text;
    }
    void text(char const* name, std::string_view bytes) { appendQuoted(key(name), bytes); }
    void number(char const* name, std::uint64_t value) { key(name) += std::to_string(value); }
    void flag(char const* name, bool value) { key(name) += value ? "true" : "false"; }
    /// Seconds, to the microsecond.
    void seconds(char const* name, double value) {
        char digits[64];
        std::snprintf(digits, sizeof digits, "%.6f", value);
        key(name) += digits;
    }
    void texts(char const* name, std::vector<std::string> const& values) {
        key(name) += '[';
        for (std::size_t index = 0; index < values.size(); ++index) {
            m_text += index ? "," : "";
            appendQuoted(m_text, values[index]);
        }
        m_text += ']';
    }
    void sides(char const* name, MoDiffBothSides<std::uint64_t> const& values) {
        ObjectWriter object(key(name));
        object.number("master", values.master);
        object.number("actual", values.actual);
        object.close();
    }
    void sides(char const* name, MoDiffBothSides<std::string> const& values) {
        ObjectWriter object(key(name));
        object.text("master", values.master);
        object.text("actual", values.actual);
        object.close();
    }
    void close() { m_text += '}'; }

private:
    std::string& m_text;
    bool m_isEmpty = true;
};

std::string asLine(std::string text) {
    text += '\n';
    return text;
}

void writePatterns(std::string& text, std::vector<MoDiffPatternCount> const& patterns) {
    text += '[';
    for (std::size_t index = 0; index < patterns.size(); ++index) {
        text += index ? "," : "";
        ObjectWriter object(text);
        object.text("name", patterns[index].name);
        object.number("master", patterns[index].bytes.master);
        object.number("actual", patterns[index].bytes.actual);
        object.close();
    }
    text += ']';
}

void writeDifference(std::string& text, MoDiffDifference const& difference) {
    ObjectWriter object(text);
    object.number("position", difference.position);
    if (difference.line)
        object.number("line", difference.line);
    object.sides("before", difference.before);
    object.sides("after", difference.after);
    object.close();
}

void writeTotals(std::string& text, MoDiffTotals const& totals) {
    ObjectWriter object(text);
    for (std::size_t index = 0; index < kMoDiffOutcomes; ++index) {
        auto const outcome = static_cast<MoDiffOutcome>(index);
        object.number(wordOf(outcome), totals.getCount(outcome));
    }
    object.close();
}

std::string textOf(json const& value) {
    return bytesOf(value.get_ref<std::string const&>());
}

MoDiffBothSides<std::uint64_t> countsOf(json const& value) {
    return {value.at("master").get<std::uint64_t>(), value.at("actual").get<std::uint64_t>()};
}

MoDiffBothSides<std::string> textsOf(json const& value) {
    return {textOf(value.at("master")), textOf(value.at("actual"))};
}

MoDiffOutcome knownOutcome(std::string const& word) {
    if (std::optional<MoDiffOutcome> const outcome = outcomeOf(word))
        return *outcome;
    throw std::invalid_argument("\"" + word + "\" is no outcome");
}

MoDiffDifference differenceOf(json const& value) {
    MoDiffDifference difference;
    difference.position = value.at("position").get<std::uint64_t>();
    difference.line = value.value("line", std::uint64_t{0});
    difference.before = textsOf(value.at("before"));
    difference.after = textsOf(value.at("after"));
    return difference;
}

/// The members that need not be there.
void readDetails(json const& object, MoDiffPairResult& pair) {
    if (auto const value = object.find("bytes"); value != object.end())
        pair.bytes = countsOf(*value);
    if (auto const value = object.find("hash"); value != object.end())
        pair.hash = textsOf(*value);
    if (auto const value = object.find("hidden"); value != object.end())
        pair.hidden = countsOf(*value);
    if (auto const value = object.find("patterns"); value != object.end())
        for (json const& pattern : *value)
            pair.patterns.push_back({textOf(pattern.at("name")), countsOf(pattern)});
    if (auto const value = object.find("difference"); value != object.end())
        pair.difference = differenceOf(*value);
    if (auto const value = object.find("output"); value != object.end())
        pair.output = textOf(*value);
    if (auto const value = object.find("result_file"); value != object.end())
        pair.resultFile = textOf(*value);
}

MoDiffPairResult pairOf(json const& object) {
    MoDiffPairResult pair;
    pair.id = textOf(object.at("id"));
    pair.format = textOf(object.at("format"));
    pair.subDirectory = textOf(object.at("sub_directory"));
    pair.master = textOf(object.at("master"));
    pair.actual = textOf(object.at("actual"));
    pair.outcome = knownOutcome(object.at("outcome").get_ref<std::string const&>());
    pair.detail = textOf(object.at("detail"));
    for (json const& warning : object.at("warnings"))
        pair.warnings.push_back(textOf(warning));
    pair.seconds = object.at("seconds").get<double>();
    readDetails(object, pair);
    return pair;
}

MoDiffRecordHeader headerOf(json const& object) {
    auto const schema = object.at("schema").get<unsigned>();
    if (schema != MoDiffRecord::kSchema)
        throw std::invalid_argument("schema " + std::to_string(schema) + ", but this program knows only schema " +
                                    std::to_string(MoDiffRecord::kSchema));
    MoDiffRecordHeader header;
    header.version = textOf(object.at("modiff"));
    header.config = object.at("config").dump();
    header.selection = object.at("selection").dump();
    header.digest = textOf(object.at("plan"));
    header.chosenDigest = object.contains("ids") ? textOf(object["ids"]) : "";
    if (auto const unreadable = object.find("unreadable"); unreadable != object.end())
        for (json const& sentence : *unreadable)
            header.unreadable.push_back(textOf(sentence));
    header.pairs = object.at("pairs").get<std::size_t>();
    header.shardIndex = object.at("shard").at("index").get<unsigned>();
    header.shardCount = object.at("shard").at("count").get<unsigned>();
    header.newFails = object.at("new_fails").get<bool>();
    return header;
}

MoDiffRecordEnd endOf(json const& object) {
    MoDiffRecordEnd end;
    end.complete = object.at("complete").get<bool>();
    end.stopped = object.contains("stopped") ? textOf(object["stopped"]) : "";
    for (auto const& [word, count] : object.at("counts").items())
        end.totals.add(knownOutcome(word), count.get<std::size_t>());
    end.seconds = object.at("seconds").get<double>();
    return end;
}

} // namespace

std::string MoDiffRecord::headerLine(MoDiffRecordHeader const& header) {
    std::string text;
    ObjectWriter object(text);
    object.text("modiff", header.version);
    object.number("schema", kSchema);
    object.key("config") += header.config;
    object.key("selection") += header.selection;
    object.text("plan", header.digest);
    object.text("ids", header.chosenDigest);
    if (!header.unreadable.empty())
        object.texts("unreadable", header.unreadable);
    object.number("pairs", header.pairs);
    object.flag("new_fails", header.newFails);
    ObjectWriter shard(object.key("shard"));
    shard.number("index", header.shardIndex);
    shard.number("count", header.shardCount);
    shard.close();
    object.close();
    return asLine(std::move(text));
}

std::string MoDiffRecord::pairLine(MoDiffPairResult const& result) {
    std::string text;
    text.reserve(1024);
    ObjectWriter object(text);
    object.text("id", result.id);
    object.text("format", result.format);
    object.text("sub_directory", result.subDirectory);
    object.text("master", result.master);
    object.text("actual", result.actual);
    object.text("outcome", wordOf(result.outcome));
    object.text("detail", result.detail);
    object.texts("warnings", result.warnings);
    object.seconds("seconds", result.seconds);
    if (result.bytes)
        object.sides("bytes", *result.bytes);
    object.sides("hash", result.hash);
    if (result.hidden)
        object.sides("hidden", *result.hidden);
    if (!result.patterns.empty())
        writePatterns(object.key("patterns"), result.patterns);
    if (result.difference)
        writeDifference(object.key("difference"), *result.difference);
    if (!result.output.empty())
        object.text("output", result.output);
    if (!result.resultFile.empty())
        object.text("result_file", result.resultFile);
    object.close();
    return asLine(std::move(text));
}

std::string MoDiffRecord::newFilesLine(std::vector<std::string> const& files) {
    std::string text;
    ObjectWriter object(text);
    object.texts("new", files);
    object.close();
    return asLine(std::move(text));
}

std::string MoDiffRecord::endLine(MoDiffRecordEnd const& end) {
    std::string text;
    ObjectWriter object(text);
    object.flag("complete", end.complete);
    if (!end.stopped.empty())
        object.text("stopped", end.stopped);
    writeTotals(object.key("counts"), end.totals);
    object.seconds("seconds", end.seconds);
    object.close();
    return asLine(std::move(text));
}

MoDiffRecord::Line MoDiffRecord::parse(std::string_view text) {
    json const object = json::parse(text);
    Line line;
    if (object.contains("modiff")) {
        line.kind = eHeader;
        line.header = headerOf(object);
    } else if (object.contains("id")) {
        line.kind = ePair;
        line.pair = pairOf(object);
    } else if (object.contains("new")) {
        line.kind = eNewFiles;
        for (json const& file : object["new"])
            line.newFiles.push_back(textOf(file));
    } else {
        line.kind = eEnd;
        line.end = endOf(object);
    }
    return line;
}
