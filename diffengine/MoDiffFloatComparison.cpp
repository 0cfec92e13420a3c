#include "MoDiffFloatComparison.h"

#include "KLTAssert.h"
#include "MoDiffResultFail.h"
#include "MoDiffResultFailDiff.h"
#include "MoDiffResultPass.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <locale.h>
#include <memory>
#include <new>
#include <system_error>
#include <type_traits>
#include <utility>

namespace {

char const kModule[] = "MoDiffFloatComparison";

using ParseStep = MoDiffFloatComparison::ParseStep;

// The grammar. These are separate from the public steps so that the search runs without calls and assertions.

inline bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

inline bool mayStart(char c) {
    return isDigit(c) || c == '-' || c == '+' || c == '.';
}

inline bool mayContinue(char c) {
    return mayStart(c) || c == 'e' || c == 'E';
}

inline ParseStep sign(char const* text) {
    bool const matched = *text == '+' || *text == '-';
    return {text + matched, matched};
}

inline ParseStep decimal(char const* text) {
    bool const matched = *text == '.';
    return {text + matched, matched};
}

inline ParseStep digits(char const* text) {
    char const* end = text;
    while (isDigit(*end))
        ++end;
    return {end, end != text};
}

inline ParseStep mantissa(char const* text) {
    ParseStep const whole = digits(sign(text).first);
    ParseStep const fraction = digits(decimal(whole.first).first);
    bool const matched = whole.second || fraction.second;
    return {matched ? fraction.first : text, matched};
}

inline ParseStep exponent(char const* text) {
    if (*text != 'e' && *text != 'E')
        return {text, false};
    return digits(sign(text + 1).first);
}

inline ParseStep number(char const* text) {
    ParseStep const found = mantissa(text);
    return found.second ? ParseStep(exponent(found.first).first, true) : found;
}

/// A number's place in a text; both null when there is none.
template<typename Char>
struct NumberText {
    Char* start;
    Char* end;
};

/// The first number that starts in [begin, end). A start that fails is given up after its sign and point, so that the
/// search is a single pass.
template<typename Char>
inline NumberText<Char> search(Char* begin, Char* end) {
    for (Char* start = begin; start != end; ++start) {
        if (!mayStart(*start))
            continue;
        if (ParseStep const found = number(start); found.second)
            return {start, start + (found.first - start)};
    }
    return {nullptr, nullptr};
}

/// Whether two numbers are spelt alike up to zeros at a fraction's end.
inline bool areSpeltAlike(NumberText<char> one, NumberText<char> other) {
    if (one.end - one.start > other.end - other.start)
        std::swap(one, other);
    bool hasPoint = false;
    bool hasExponent = false;
    for (; one.start != one.end; ++one.start, ++other.start) {
        if (*one.start != *other.start)
            return false;
        hasPoint = hasPoint || *one.start == '.';
        hasExponent = hasExponent || *one.start == 'e' || *one.start == 'E';
    }
    bool const mayHaveZeros = hasPoint && !hasExponent;
    return other.start == other.end ||
           (mayHaveZeros && std::all_of(other.start, other.end, [](char digit) { return digit == '0'; }));
}

/// The length of a beginning that both texts share and in which no number is cut off; 0 when it is shorter than a
/// block. Both texts hold the same numbers in it.
inline std::ptrdiff_t lengthInCommon(char const* one, char const* oneEnd, char const* other, char const* otherEnd) {
    std::ptrdiff_t const kBlock = 256, kLongestTail = 32;
    std::ptrdiff_t const shorter = std::min(oneEnd - one, otherEnd - other);
    std::ptrdiff_t length = 0;
    while (shorter - length >= kBlock && std::memcmp(one + length, other + length, kBlock) == 0) {
        std::ptrdiff_t cut = length + kBlock;
        std::ptrdiff_t const least = cut - kLongestTail;
        while (cut > least && mayContinue(one[cut - 1]))
            --cut;
        if (cut == least)
            break;
        length = cut;
    }
    return length;
}

/// Puts a NUL byte into a text as long as it lives.
class TemporaryEnd {
public:
    explicit TemporaryEnd(char* end) : m_end(end), m_byte(*end) { *end = '\0'; }
    ~TemporaryEnd() { *m_end = m_byte; }
    TemporaryEnd(TemporaryEnd const&) = delete;
    TemporaryEnd& operator=(TemporaryEnd const&) = delete;

private:
    char* m_end;
    char m_byte;
};

locale_t cLocale() {
    struct Free {
        void operator()(locale_t locale) const { freelocale(locale); }
    };
    static std::unique_ptr<std::remove_pointer_t<locale_t>, Free> const locale(newlocale(LC_ALL_MASK, "C", nullptr));
    if (!locale)
        throw std::bad_alloc();
    return locale.get();
}

#ifdef __i386__
/// The standard library's std::from_chars() for double computes in extended precision here, and rounds twice.
bool convertPlain(char const*, char const*, double&) {
    return false;
}
#else
/// Converts a text that is a number to its last character, without a leading plus and in the range of double.
bool convertPlain(char const* start, char const* end, double& value) {
    auto const [stop, error] = std::from_chars(start, end, value);
    return error == std::errc() && stop == end;
}
#endif

double convert(char* start, char* end) {
    double value = 0;
    if (convertPlain(start, end, value))
        return value;
    locale_t const locale = cLocale();
    TemporaryEnd const terminated(end);
    return strtod_l(start, nullptr, locale);
}

} // namespace

bool MoDiffFloatComparison_StartPredicate::operator()(char character) const {
    return mayStart(character);
}

MoDiffFloatComparison::MoDiffFloatComparison() = default;

MoDiffFloatComparison::~MoDiffFloatComparison() = default;

bool MoDiffFloatComparison::my_isnan(double f) {
    return std::isnan(f);
}

bool MoDiffFloatComparison::my_finite(double f) {
    return std::isfinite(f);
}

double MoDiffFloatComparison::my_infinity() {
    return std::numeric_limits<double>::infinity();
}

int MoDiffFloatComparison::getExponent(double f) const {
    KLT_ASSERT_AT(kModule, 136, "KLT_ASSERT(my_finite(f));", my_finite(f));
    double const magnitude = std::fabs(f);
    return magnitude == 0 ? 0 : static_cast<int>(std::floor(std::log10(magnitude)));
}

bool MoDiffFloatComparison::compare(double master, double actual) const {
    if (my_isnan(master) || my_isnan(actual))
        return false;
    if (master == actual)
        return true;
    if (!my_finite(master))
        return false;
    double const tolerance = std::pow(10.0, getExponent(master) - 14);
    return std::fabs(master - actual) <= tolerance;
}

ParseStep MoDiffFloatComparison::parseSign(char const* text) const {
    KLT_ASSERT_AT(kModule, 216, "KLT_ASSERT(text);", text);
    return sign(text);
}

ParseStep MoDiffFloatComparison::parseDecimal(char const* text) const {
    KLT_ASSERT_AT(kModule, 227, "KLT_ASSERT(text);", text);
    return decimal(text);
}

ParseStep MoDiffFloatComparison::parseDigits(char const* text) const {
    KLT_ASSERT_AT(kModule, 239, "KLT_ASSERT(text);", text);
    return digits(text);
}

ParseStep MoDiffFloatComparison::parseMantissa(char const* text) const {
    KLT_ASSERT_AT(kModule, 251, "KLT_ASSERT(text);", text);
    return mantissa(text);
}

ParseStep MoDiffFloatComparison::parseExponent(char const* text) const {
    KLT_ASSERT_AT(kModule, 270, "KLT_ASSERT(text);", text);
    return exponent(text);
}

ParseStep MoDiffFloatComparison::parseNumber(char const* text) const {
    KLT_ASSERT_AT(kModule, 283, "KLT_ASSERT(text);", text);
    return number(text);
}

bool MoDiffFloatComparison::findNumber(char const* begin, char const* end, char const*& start,
                                       char const*& numberEnd) const {
    NumberText<char const> const found = search(begin, end);
    start = found.start;
    numberEnd = found.end;
    return start != nullptr;
}

bool MoDiffFloatComparison::findNumber(char const* text, char const*& start, char const*& numberEnd) const {
    KLT_ASSERT_AT(kModule, 330, "KLT_ASSERT(text);", text);
    return findNumber(text, text + std::strlen(text), start, numberEnd);
}

double MoDiffFloatComparison::extractNumber(char* start, char* end) const {
    KLT_ASSERT_AT(kModule, 342, "KLT_ASSERT(start);", start);
    KLT_ASSERT_AT(kModule, 343, "KLT_ASSERT(end);", end);
    return convert(start, end);
}

char* MoDiffFloatComparison::findNextNumber(char* begin, char* end, int& found, double& value) const {
    NumberText<char> const next = search(begin, end);
    found = next.start ? 1 : 0;
    if (!found)
        return end;
    value = convert(next.start, next.end);
    return next.end;
}

MoDiffResult* MoDiffFloatComparison::performStringDiff(std::string const& masterName, std::string const& actualName,
                                                       char* master, char* actual) const {
    KLT_ASSERT_AT(kModule, 380, "KLT_ASSERT(master && actual);", master && actual);
    char* const masterEnd = master + std::strlen(master);
    char* const actualEnd = actual + std::strlen(actual);
    for (;;) {
        std::ptrdiff_t const common = lengthInCommon(master, masterEnd, actual, actualEnd);
        NumberText<char> const masterNumber = search(master + common, masterEnd);
        NumberText<char> const actualNumber = search(actual + common, actualEnd);
        if (!masterNumber.start && !actualNumber.start)
            return new MoDiffResultPass(masterName, actualName);
        if (!masterNumber.start || !actualNumber.start)
            return new MoDiffResultFailDiff(masterName, actualName);
        // Most numbers are spelt alike; those need no conversion.
        if (!areSpeltAlike(masterNumber, actualNumber) &&
            !compare(convert(masterNumber.start, masterNumber.end), convert(actualNumber.start, actualNumber.end)))
            return new MoDiffResultFail(masterName, actualName);
        master = masterNumber.end;
        actual = actualNumber.end;
    }
}
