#include "MoDiffConfigurationValue.h"

#include "MoDiffNearestWord.h"
#include "MoDiffSuiteConfiguration.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <string_view>
#include <utility>

namespace fs = std::filesystem;

namespace {

double constexpr kKibi = 1024;

template<typename Result>
bool readsWhole(std::string_view text, Result& result) {
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
    return error == std::errc() && end == text.data() + text.size();
}

/// The nearest unit for one that isn't known.
std::string hintFor(std::string const& unit, std::vector<std::string> const& names) {
    std::string const hint = unit.empty() ? "" : MoDiffNearestWord::hint(unit, names);
    return hint.empty() ? "" : " (" + hint.substr(2) + ")";
}

/// Writes what a value is into an error.
struct Shower {
    std::string operator()(std::string const& text) const { return '"' + text + '"'; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const {
        std::string text = std::to_string(number);
        return text.erase(text.find_last_not_of('0') + 1);
    }
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(MoDiffConfigurationValue::Date const& date) const { return "the date " + date.text; }
    std::string operator()(MoDiffConfigurationValue::Other const& other) const { return other.words; }
    std::string operator()(MoDiffConfigurationValue::List const&) const { return "a list"; }
};

} // namespace

MoDiffConfigurationValue::MoDiffConfigurationValue(std::string key, std::string place, Content content)
    : m_key(std::move(key)), m_place(std::move(place)), m_content(std::move(content)) {
}

MoDiffConfigurationValue MoDiffConfigurationValue::ofOption(std::string key, std::string const& option,
                                                            std::vector<std::string> const& texts) {
    List entries;
    for (std::string const& text : texts) {
        entries.emplace_back(key, option, text);
        entries.back().m_isOption = true;
    }
    MoDiffConfigurationValue value(std::move(key), option, std::move(entries));
    value.m_isOption = true;
    return value;
}

/// What a list on the command line comes to where one value is read.
MoDiffConfigurationValue const& MoDiffConfigurationValue::single() const {
    auto const* const list = std::get_if<List>(&m_content);
    return m_isOption && list && !list->empty() ? list->back() : *this;
}

void MoDiffConfigurationValue::fail(std::string const& what) const {
    throw MoDiffConfigurationError(m_place + ": " + what);
}

void MoDiffConfigurationValue::failType(std::string const& wanted) const {
    fail(m_key + " must be " + wanted + ", not " + shown());
}

std::string MoDiffConfigurationValue::shown() const {
    return std::visit(Shower(), single().m_content);
}

std::string const& MoDiffConfigurationValue::text() const {
    auto const* const text = std::get_if<std::string>(&single().m_content);
    if (!text)
        failType("a text");
    if (text->find('\0') != std::string::npos)
        fail(m_key + " must not hold a NUL");
    return *text;
}

std::string const& MoDiffConfigurationValue::name() const {
    if (text().empty())
        fail(m_key + " must not be empty");
    return text();
}

MoDiffConfigurationValue::List const& MoDiffConfigurationValue::entries() const {
    auto const* const list = std::get_if<List>(&m_content);
    if (!list)
        failType("a list");
    return *list;
}

std::size_t MoDiffConfigurationValue::word(std::vector<std::string> const& words) const {
    std::string const& word = text();
    for (std::size_t index = 0; index < words.size(); ++index)
        if (words[index] == word)
            return index;
    fail(m_key + " has no word " + shown() + MoDiffNearestWord::hint(word, words));
}

double MoDiffConfigurationValue::number(double least, double most, std::string const& wanted) const {
    Content const& content = single().m_content;
    double number = NAN;
    if (auto const* const whole = std::get_if<std::int64_t>(&content))
        number = static_cast<double>(*whole);
    else if (auto const* const real = std::get_if<double>(&content))
        number = *real;
    else if (!m_isOption || !readsWhole(text(), number))
        failType(wanted);
    if (!(number >= least && number <= most)) // neither is a NaN
        failType(wanted);
    return number;
}

unsigned MoDiffConfigurationValue::count(unsigned least, unsigned most) const {
    std::string const wanted = "a whole number from " + std::to_string(least) + " to " + std::to_string(most);
    double const value = number(least, most, wanted);
    if (value != std::floor(value) || std::holds_alternative<double>(single().m_content))
        failType(wanted);
    return static_cast<unsigned>(value);
}

double MoDiffConfigurationValue::percent() const {
    return number(0, 100, "a number from 0 to 100");
}

bool MoDiffConfigurationValue::isNone() const {
    auto const* const text = std::get_if<std::string>(&single().m_content);
    return text && *text == "none";
}

double MoDiffConfigurationValue::quantity(std::vector<Unit> const& units, std::string const& wanted,
                                          Range const& range) const {
    if (isNone())
        return 0;
    if (!std::holds_alternative<std::string>(single().m_content))
        failType(wanted);
    std::string_view const all = text();
    std::size_t const digits = std::min(all.find_first_not_of("0123456789."), all.size());
    double number = 0;
    if (!readsWhole(all.substr(0, digits), number))
        failType(wanted);
    std::vector<std::string> names;
    for (Unit const& unit : units) {
        names.emplace_back(unit.name);
        if (all.substr(digits) != unit.name)
            continue;
        double const amount = std::round(number * unit.factor);
        if (amount < range.least || amount > range.most)
            failType(range.words + " or \"none\"");
        return amount;
    }
    std::string const unit(all.substr(digits));
    failType(wanted + " or \"none\"" + hintFor(unit, names));
}

std::uint64_t MoDiffConfigurationValue::size(Range const& range) const {
    static std::vector<Unit> const units = {{"B", 1},
                                            {"kB", 1e3},
                                            {"KB", 1e3},
                                            {"MB", 1e6},
                                            {"GB", 1e9},
                                            {"TB", 1e12},
                                            {"KiB", kKibi},
                                            {"MiB", kKibi * kKibi},
                                            {"GiB", kKibi * kKibi * kKibi},
                                            {"TiB", kKibi * kKibi * kKibi * kKibi}};
    return static_cast<std::uint64_t>(quantity(units, "a size such as \"512MB\" or \"2GiB\"", range));
}

std::chrono::milliseconds MoDiffConfigurationValue::duration(Range const& range) const {
    static std::vector<Unit> const units = {{"ms", 1}, {"s", 1e3}, {"m", 60e3}, {"h", 3600e3}, {"d", 86400e3}};
    double const milliseconds = quantity(units, "a duration such as \"60s\", \"5m\" or \"1d\"", range);
    return std::chrono::milliseconds(static_cast<std::int64_t>(milliseconds));
}

std::string const& MoDiffConfigurationValue::date() const {
    auto const* const date = std::get_if<Date>(&m_content);
    if (!date)
        failType("a date such as 2027-01-31, without quotation marks");
    return date->text;
}

std::string MoDiffConfigurationValue::pathBelow() const {
    fs::path const path(text());
    if (path.is_absolute())
        fail(m_key + " must be relative, not " + shown());
    for (fs::path const& step : path)
        if (step == "..")
            fail(m_key + " must not lead out of its directory by \"..\": " + shown());
    std::string shortest = path.lexically_normal().string();
    shortest.erase(shortest.find_last_not_of('/') + 1);
    return shortest == "." ? "" : shortest;
}
