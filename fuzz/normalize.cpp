// Any expression on any text must delete what ICU deletes from the whole text. Input: the expression, a NUL byte, the
// text. The other side has its own conversion and calls ICU directly.

#include "KLTAssertError.h"
#include "MoCleansingMapCheck.h"
#include "MoDiffNormalizationPattern.h"
#include "MoFuzz.h"
#include "MoOracle.h"

#include <algorithm>
#include <optional>

namespace {

// Each part of an expression and each way through the code shows in less; ICU's time grows with both.
std::size_t const kLongestExpression = 80;
std::size_t const kLongestText = 400;

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
void checkMap(MoOracle::Expression const& reference, char const* regex, std::string const& text) {
    std::string withoutReturns = text;
    withoutReturns.erase(std::remove(withoutReturns.begin(), withoutReturns.end(), '\r'), withoutReturns.end());
    std::optional<std::string> const expected = reference.deleteMatches(withoutReturns);
    MoDiffNormalizationPattern const pattern(regex);
    if (expected)
        MO_FUZZ_REQUIRE(faultOfCleansingMap(text, {&pattern}, *expected).empty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    MoFuzzInput input(data, size);
    std::string const regex = input.until('\0').substr(0, kLongestExpression);
    std::string const text = input.until('\0').substr(0, kLongestText);

    MoOracle::Expression const reference(regex);
    if (!reference.isWellFormed()) {
        MO_FUZZ_REQUIRE(raises(compile, regex.c_str()));
        return 0;
    }
    std::optional<std::string> const expected = reference.deleteMatches(text);
    if (reference.hasTimedOut())
        return 0;
    auto const buffer = moFuzzBuffer(text);
    MO_FUZZ_REQUIRE(raises(normalize, regex.c_str(), buffer.get()) == !expected);
    std::string shown = expected ? *expected : text;
    MO_FUZZ_REQUIRE(shown.size() <= text.size());
    shown.resize(text.size() + 1);
    MO_FUZZ_REQUIRE(std::memcmp(buffer.get(), shown.data(), shown.size()) == 0);
    checkMap(reference, regex.c_str(), text);
    return 0;
}
