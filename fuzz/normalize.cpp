// Any expression on any text must delete what ICU deletes from the whole text. Input: the expression, a NUL byte, the
// text. The other side has its own conversion and calls ICU directly.

#include "KLTAssertError.h"
#include "MoCleansingMapCheck.h"
#include "MoDiffNormalizationPattern.h"
#include "MoFuzz.h"

#include <optional>
#include <unicode/uregex.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace {

// Each part of an expression and each way through the code shows in less; ICU's time grows with both.
std::size_t const kLongestExpression = 80;
std::size_t const kLongestText = 400;

/// A byte that is not part of valid UTF-8 becomes a low surrogate of its own.
std::u16string toUtf16(std::string const& text) {
    std::u16string units;
    auto const* const bytes = reinterpret_cast<unsigned char const*>(text.data());
    auto const length = static_cast<int>(text.size());
    for (int i = 0; i < length;) {
        int next = i;
        UChar32 code = 0;
        U8_NEXT(bytes, next, length, code);
        if (code < 0) {
            units += static_cast<char16_t>(0xDC00 + bytes[i]);
            ++i;
            continue;
        }
        if (!U_IS_BMP(code))
            units += static_cast<char16_t>(U16_LEAD(code));
        units += static_cast<char16_t>(U_IS_BMP(code) ? code : U16_TRAIL(code));
        i = next;
    }
    return units;
}

std::string toUtf8(std::u16string const& units) {
    std::string text;
    auto const length = static_cast<int>(units.size());
    for (int i = 0; i < length;) {
        UChar32 code = 0;
        U16_NEXT(units.data(), i, length, code);
        std::uint8_t bytes[U8_MAX_LENGTH] = {static_cast<std::uint8_t>(code & 0xFF)};
        int count = 1;
        if (!U16_IS_TRAIL(code)) {
            count = 0;
            U8_APPEND_UNSAFE(bytes, count, code);
        }
        text.append(bytes, bytes + count);
    }
    return text;
}

/// The text without the matches; nothing when ICU gives up, with the reason in the status.
std::optional<std::string> deleteMatches(URegularExpression* regex, std::string const& text, UErrorCode& status) {
    std::u16string const input = toUtf16(text);
    std::u16string output(input.size() + 1, u'\0');
    uregex_setTimeLimit(regex, 20, &status);
    uregex_setText(regex, input.data(), static_cast<int>(input.size()), &status);
    int const length = uregex_replaceAll(regex, u"", 0, output.data(), static_cast<int>(output.size()), &status);
    if (U_FAILURE(status))
        return std::nullopt;
    output.resize(static_cast<std::size_t>(length));
    return toUtf8(output);
}

bool raises(void (*action)(char const*, char*), char const* regex, char* text = nullptr) {
    try {
        action(regex, text);
    } catch (KLTAssertError const&) {
        return true;
    }
    return false;
}

void compile(char const* regex, char*) {
    MoDiffNormalizationPattern const pattern(regex);
}

void normalize(char const* regex, char* text) {
    MoDiffNormalizationPattern(regex).normalizeText(text);
}

/// What is deleted can be told byte by byte; carriage returns go first there.
void checkMap(URegularExpression* reference, char const* regex, std::string const& text) {
    std::string withoutReturns = text;
    withoutReturns.erase(std::remove(withoutReturns.begin(), withoutReturns.end(), '\r'), withoutReturns.end());
    UErrorCode status = U_ZERO_ERROR;
    std::optional<std::string> const expected = deleteMatches(reference, withoutReturns, status);
    MoDiffNormalizationPattern const pattern(regex);
    if (expected)
        MO_FUZZ_REQUIRE(faultOfCleansingMap(text, {&pattern}, *expected).empty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    MoFuzzInput input(data, size);
    std::string const regex = input.until('\0').substr(0, kLongestExpression);
    std::string const text = input.until('\0').substr(0, kLongestText);

    UErrorCode status = U_ZERO_ERROR;
    icu::LocalURegularExpressionPointer const reference(uregex_openC(regex.c_str(), 0, nullptr, &status));
    if (reference.isNull()) {
        MO_FUZZ_REQUIRE(raises(compile, regex.c_str()));
        return 0;
    }
    std::optional<std::string> const expected = deleteMatches(reference.getAlias(), text, status);
    if (status == U_REGEX_TIME_OUT)
        return 0;
    auto const buffer = moFuzzBuffer(text);
    MO_FUZZ_REQUIRE(raises(normalize, regex.c_str(), buffer.get()) == !expected);
    std::string shown = expected ? *expected : text;
    MO_FUZZ_REQUIRE(shown.size() <= text.size());
    shown.resize(text.size() + 1);
    MO_FUZZ_REQUIRE(std::memcmp(buffer.get(), shown.data(), shown.size()) == 0);
    checkMap(reference.getAlias(), regex.c_str(), text);
    return 0;
}
