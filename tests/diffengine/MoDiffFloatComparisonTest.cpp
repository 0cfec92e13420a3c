#include "MoTestTree.h"
#include "libMoDiffEngine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Texts = std::vector<std::string>;
using Comparison = MoDiffFloatComparison;

Comparison const comparison;

/// The outcome for copies that end where their memory ends.
std::string diff(std::string const& master, std::string const& actual) {
    std::vector<char> const masterBytes(master.c_str(), master.c_str() + master.size() + 1);
    std::vector<char> const actualBytes(actual.c_str(), actual.c_str() + actual.size() + 1);
    std::vector<char> m = masterBytes, a = actualBytes;
    std::unique_ptr<MoDiffResult> const result(comparison.performStringDiff("m", "a", m.data(), a.data()));
    EXPECT_TRUE(m == masterBytes && a == actualBytes) << master << " | " << actual;
    EXPECT_EQ("m/a", result->getMasterName() + "/" + result->getActualName());
    return result->isPassed() ? "pass" : dynamic_cast<MoDiffResultFailDiff*>(result.get()) ? "diff" : "fail";
}

/// The numbers of a text by counting runs of characters.
Texts expectedNumbers(std::string const& text) {
    auto const run = [](char const* at) { return std::strspn(at, "0123456789"); };
    auto const one = [](char const* at, char const* set) { return *at != '\0' && std::strchr(set, *at) ? 1 : 0; };
    Texts numbers;
    for (char const* p = text.c_str(); *p != '\0';) {
        char const* const whole = p + one(p, "+-");
        char const* const fraction = whole + run(whole) + one(whole + run(whole), ".");
        char const* end = fraction + run(fraction);
        if (run(whole) + run(fraction) == 0) {
            ++p;
            continue;
        }
        if (one(end, "eE"))
            end += 1 + one(end + 1, "+-"), end += run(end);
        numbers.emplace_back(p, end);
        p += numbers.back().size();
    }
    return numbers;
}

int expectedExponent(double value) {
    long double const magnitude = std::abs(value);
    return value == 0 ? 0 : static_cast<int>(std::floor(static_cast<double>(std::log10(magnitude))));
}

std::string expectedDiff(std::string const& master, std::string const& actual) {
    Texts const masters = expectedNumbers(master), actuals = expectedNumbers(actual);
    for (std::size_t i = 0; i < std::min(masters.size(), actuals.size()); ++i) {
        double const m = std::strtod(masters[i].c_str(), nullptr), a = std::strtod(actuals[i].c_str(), nullptr);
        if (m != a && !(std::isfinite(m) && std::abs(m - a) <= std::pow(10.0, expectedExponent(m) - 14)))
            return "fail";
    }
    return masters.size() == actuals.size() ? "pass" : "diff";
}

TEST(MoDiffFloatComparison, steps_stop_where_the_grammar_ends) {
    struct {
        Comparison::ParseStep (Comparison::*step)(char const*) const;
        char const* text;
        int length;
        bool matches;
    } const rows[] = {{&Comparison::parseSign, "+-", 1, true},        {&Comparison::parseSign, "5", 0, false},
                      {&Comparison::parseDecimal, "..", 1, true},     {&Comparison::parseDecimal, ",", 0, false},
                      {&Comparison::parseDigits, "09\xb2", 2, true},  {&Comparison::parseDigits, "", 0, false},
                      {&Comparison::parseMantissa, "-.5.", 3, true},  {&Comparison::parseMantissa, "+.e1", 0, false},
                      {&Comparison::parseMantissa, "5.e1", 2, true},  {&Comparison::parseMantissa, "-", 0, false},
                      {&Comparison::parseExponent, "e-12.", 4, true}, {&Comparison::parseExponent, "E+x", 2, false},
                      {&Comparison::parseExponent, "1", 0, false},    {&Comparison::parseExponent, "em", 1, false},
                      {&Comparison::parseNumber, "2E+x", 3, true},    {&Comparison::parseNumber, "e5", 0, false}};
    for (auto const& row : rows)
        EXPECT_EQ(std::make_pair(row.text + row.length, row.matches), (comparison.*row.step)(row.text)) << row.text;
    for (int c = 1; c < 256; ++c)
        EXPECT_EQ(std::strchr("+-.0123456789", c) != nullptr,
                  MoDiffFloatComparison_StartPredicate()(static_cast<char>(c)));
}

TEST(MoDiffFloatComparison, numbers_start_before_the_end) {
    char text[] = "+-52e+ 0x10";
    char const *start = text, *end = text;
    EXPECT_TRUE(!comparison.findNumber(text, text + 1, start, end) && !start && !end);
    EXPECT_TRUE(comparison.findNumber(text, text + 2, start, end) && start == text + 1 && end == text + 6);
    int found = 7;
    double value = 7;
    EXPECT_EQ(text + 1, comparison.findNextNumber(text, text + 1, found, value));
    EXPECT_TRUE(found == 0 && value == 7);
    EXPECT_EQ(text + 8, comparison.findNextNumber(text + 6, text + 11, found, value));
    EXPECT_TRUE(found == 1 && value == 0);
    for (char const* part : {"+", "-.", "."}) { // a start that fails must not be followed to the end of the text
        std::string many;
        while (many.size() < 1000000)
            many += part;
        EXPECT_FALSE(comparison.findNumber(many.c_str(), start, end)) << part;
    }
}

TEST(MoDiffFloatComparison, values_are_those_of_the_c_library) {
    std::istringstream words(R"(. 5e 2E+ +5 -.5 5. -0 1e999 -1e-999 -inf nan 0x1p3 12a 1,5 1e22 1e-23 1..2 4.9e-324
        9007199254740993 2.4703282292062327e-324 2.4703282292062328e-324 1.7976931348623158e308
        1.7976931348623159e308)");
    Texts texts(std::istream_iterator<std::string>(words), {});
    texts.insert(texts.end(), {"", " 7", std::string(5000, '9'), "0." + std::string(70000, '0') + "1e70001"});
    std::mt19937_64 random(1);
    for (int i = 0; i < 20000; ++i)
        texts.push_back(std::to_string(random() >> random() % 64) + (i % 2 ? "." : "") +
                        std::to_string(random() % 1000) + "e" +
                        std::to_string(static_cast<int>(random() % 700) - 360));
    for (std::string const& text : texts) {
        std::string longer = text + "7e1x";
        double const expected = std::strtod(text.c_str(), nullptr);
        double const value = comparison.extractNumber(longer.data(), longer.data() + text.size());
        EXPECT_EQ(0, std::memcmp(&expected, &value, sizeof value)) << text << " gave " << value;
        EXPECT_EQ(text + "7e1x", longer);
    }
}

TEST(MoDiffFloatComparison, texts_agree_number_by_number) {
    std::istringstream rows(R"(pass|no number|- . +. words; pass|a 1.0|b 1.000000000000001; pass||; pass|0|1e-15;
        fail|1.0|1.0000000000001; diff|1 2|1; diff|1|1 2; fail|1e-20|0; pass|0|1e-20; pass|1000|1000.000000000001;
        fail|1 2|1 3; fail|1e999|1e308; fail|1e308|1e999; fail|1e999|-1e999; pass|5em|5ex; pass|-.5 -0.0|-0.5 +0e5;
        pass|1. -2.5 .0|1.000 -2.500 .00; fail|10|100; fail|1.5e1|1.5e10; fail|1.5e|1.50e1; fail|1.5|1.5001;
        pass|1e999 -1e400|2e999 -1e500; pass|0x10|0 10; pass|x-1 a123 1-2 1.2.3 +-5|-1 123 1 -2 1.2 0.3 -5;)");
    std::string outcome, master, actual;
    while (std::getline(rows >> std::ws, outcome, '|') && std::getline(rows, master, '|') &&
           std::getline(rows, actual, ';'))
        EXPECT_EQ(outcome, diff(master, actual)) << master << " | " << actual;
    EXPECT_TRUE(rows.eof());
    std::string const one = "1." + std::string(40, '0');
    for (std::string common; common.size() < 600; common += ' ') { // a common beginning must not cut a number off
        EXPECT_EQ("pass", diff(common + "1e-400", common + "1e-401")) << common.size();
        EXPECT_EQ("pass", diff(common + one + "1", common + one + "2")) << common.size();
    }
    double const nan = std::numeric_limits<double>::quiet_NaN(), infinity = Comparison::my_infinity();
    EXPECT_FALSE(comparison.compare(nan, nan) || comparison.compare(1, nan) || comparison.compare(infinity, 1));
    EXPECT_TRUE(comparison.compare(infinity, infinity) && infinity > std::numeric_limits<double>::max());
    EXPECT_TRUE(Comparison::my_isnan(nan) && !Comparison::my_isnan(infinity));
    EXPECT_TRUE(Comparison::my_finite(5e-324) && !Comparison::my_finite(-infinity) && !Comparison::my_finite(nan));
}

TEST(MoDiffFloatComparison, tolerance_follows_exact_powers_of_ten) {
    for (int e = -323; e <= 308; ++e) {
        std::string const scale = "e" + std::to_string(e), power = "1" + scale;
        double const value = std::strtod(power.c_str(), nullptr);
        // Below the normal range the nearest double may be well under the power, and the tolerance comes to its end.
        EXPECT_EQ(e < -308 ? expectedExponent(value) : e, comparison.getExponent(-value)) << power;
        EXPECT_EQ(e >= -309, comparison.compare(value, std::nextafter(value, 0))) << power;
        if (e < -307)
            continue;
        EXPECT_EQ("pass", diff(power + " -" + power, "1.000000000000009" + scale + " -.999999999999991" + scale));
        EXPECT_EQ("fail", diff(power, "1.000000000000011" + scale)) << power;
        EXPECT_EQ("fail", diff("-" + power, "-.999999999999989" + scale)) << power;
    }
    EXPECT_TRUE(comparison.getExponent(0) == 0 && comparison.getExponent(9.99) == 0);
    EXPECT_TRUE(comparison.getExponent(-1234.5) == 3 && comparison.getExponent(0.05) == -2);
}

TEST(MoDiffFloatComparison, agrees_with_a_plain_reading_of_generated_texts) {
    std::mt19937 random(2);
    for (int i = 0; i < 20000; ++i) { // a master of 15 digits, and an actual some tenths of its last digit away
        long long const digits = 100000000000002 + static_cast<long long>(random()) * 200000;
        int const tenths = static_cast<int>(random() % 41) - 20;
        std::string const scale = "e" + std::to_string(static_cast<int>(random() % 560) - 290);
        std::string const master = std::to_string(digits) + "0" + scale;
        std::string const actual = std::to_string(digits * 10 + tenths) + scale;
        bool const isAtEdge = std::abs(tenths) >= 8 && std::abs(tenths) <= 12; // within the rounding of the values
        std::string const expected = std::abs(tenths) < 10 ? "pass" : "fail";
        EXPECT_EQ(isAtEdge ? expectedDiff(master, actual) : expected, diff(master, actual)) << master << tenths;
    }
    for (int i = 0; i < 60000; ++i) {
        std::string master;
        for (auto n = random() % (i % 8 ? 24 : 800); n > 0; --n)
            master += "0123456789.+-eE x5\n."[random() % 20];
        std::string actual = master;
        if (!actual.empty() && i % 4 != 0)
            actual[random() % actual.size()] = "05.-e x"[random() % 7];
        EXPECT_EQ(expectedDiff(master, actual), diff(master, actual)) << master << " | " << actual;
        Texts found;
        char const *start = nullptr, *end = master.c_str();
        while (comparison.findNumber(end, start, end))
            found.emplace_back(start, end);
        EXPECT_EQ(expectedNumbers(master), found);
    }
}

/// Makes and sets a locale that writes a comma for the point, when localedef is there.
bool setCommaLocale(std::filesystem::path const& directory) {
    MoTestTree::write(directory / "comma", "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3;3\n"
                                           "END LC_NUMERIC\n");
    std::string const made = (directory / "xx_XX.UTF-8").string();
    std::string const command = "localedef -c -f UTF-8 -i " + (directory / "comma").string() + " " + made;
    int const ignored = std::system((command + " >/dev/null 2>&1").c_str()); // it warns of the other categories
    setenv("LOCPATH", directory.c_str(), 1);
    return ignored >= 0 && std::setlocale(LC_NUMERIC, "xx_XX.UTF-8");
}

TEST(MoDiffFloatComparison, locale_of_the_process_changes_nothing) {
    MoTestTree const tree;
    bool const isSet = setCommaLocale(tree.root()) && std::strtod("1,5", nullptr) == 1.5;
    std::string const outcomes = diff("1.5 +2.5 3.5e", "+1.5 2.5 3.5") + diff("+1.5", "1.6") + diff("1,5", "+1 5");
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
    if (!isSet)
        GTEST_SKIP() << "no locale with a decimal comma can be made here";
    EXPECT_EQ("passfailpass", outcomes);
}

TEST(MoDiffFloatComparison, null_texts_and_infinite_values_are_refused) {
    char const *start = nullptr, *end = nullptr;
    char text[] = "1";
    std::tuple<std::function<void()>, std::string, int> const rows[] = {
        {[] { comparison.getExponent(-Comparison::my_infinity()); }, "my_finite(f)", 136},
        {[] { comparison.parseSign(nullptr); }, "text", 216},
        {[] { comparison.parseDecimal(nullptr); }, "text", 227},
        {[] { comparison.parseDigits(nullptr); }, "text", 239},
        {[] { comparison.parseMantissa(nullptr); }, "text", 251},
        {[] { comparison.parseExponent(nullptr); }, "text", 270},
        {[] { comparison.parseNumber(nullptr); }, "text", 283},
        {[&] { comparison.findNumber(nullptr, start, end); }, "text", 330},
        {[&] { comparison.extractNumber(nullptr, text); }, "start", 342},
        {[&] { comparison.extractNumber(text, nullptr); }, "end", 343},
        {[&] { comparison.performStringDiff("m", "a", nullptr, text); }, "master && actual", 380},
        {[&] { comparison.performStringDiff("m", "a", text, nullptr); }, "master && actual", 380}};
    for (auto const& [call, condition, line] : rows)
        try {
            call();
            ADD_FAILURE() << line << " raised nothing";
        } catch (KLTAssertError& error) {
            KLTFileLocation const& where = error.getBackTrace().front().location;
            EXPECT_EQ("KLT_ASSERT(" + condition + ");", error.getText());
            EXPECT_EQ(std::make_pair(std::string("MoDiffFloatComparison"), line),
                      std::make_pair(std::string(where.getFileName()), where.getLine()));
        }
}

} // namespace
