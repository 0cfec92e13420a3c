// The numbers of two texts, in buffers exactly as long as they are, against numbers found and compared one by one.
// Input: two texts (see MoFuzzInput).

#include "MoDiffFloatComparison.h"
#include "MoDiffResultFail.h"
#include "MoDiffResultFailDiff.h"
#include "MoDiffResultPass.h"
#include "MoFuzz.h"

#include <cmath>
#include <typeinfo>
#include <vector>

namespace {

std::size_t const kLongest = 2048; // some of the blocks of 256 bytes in which texts are compared before they are read

bool isDigit(char c) {
    return std::strchr("0123456789", c) && c != '\0';
}

std::size_t skipDigits(std::string const& text, std::size_t at) {
    while (isDigit(text[at]))
        ++at;
    return at;
}

std::size_t skipSign(std::string const& text, std::size_t at) {
    return text[at] == '+' || text[at] == '-' ? at + 1 : at;
}

/// Where the number that starts here ends; the same place when there is none.
std::size_t endOfNumber(std::string const& text, std::size_t start) {
    std::size_t const whole = skipSign(text, start);
    std::size_t const point = skipDigits(text, whole);
    std::size_t const fraction = text[point] == '.' ? point + 1 : point;
    std::size_t const end = skipDigits(text, fraction);
    if (point == whole && end == fraction)
        return start;
    return text[end] == 'e' || text[end] == 'E' ? skipDigits(text, skipSign(text, end + 1)) : end;
}

std::vector<double> numbersIn(std::string const& text) {
    std::vector<double> numbers;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t const end = endOfNumber(text, at);
        if (end > at)
            numbers.push_back(std::strtod(text.substr(at, end - at).c_str(), nullptr));
        at = end > at ? end : at + 1;
    }
    return numbers;
}

bool areClose(double master, double actual) {
    if (master == actual)
        return true;
    if (!std::isfinite(master))
        return false;
    double const exponent = master == 0 ? 0 : std::floor(std::log10(std::fabs(master)));
    return std::fabs(master - actual) <= std::pow(10.0, exponent - 14);
}

std::type_info const& expectedResult(std::vector<double> const& master, std::vector<double> const& actual) {
    for (std::size_t i = 0; i < std::min(master.size(), actual.size()); ++i)
        if (!areClose(master[i], actual[i]))
            return typeid(MoDiffResultFail);
    return master.size() == actual.size() ? typeid(MoDiffResultPass) : typeid(MoDiffResultFailDiff);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size > kLongest)
        return 0;
    auto const [master, actual] = MoFuzzInput(data, size).twoTexts();
    auto const masterBuffer = moFuzzBuffer(master);
    auto const actualBuffer = moFuzzBuffer(actual);
    std::unique_ptr<MoDiffResult> const result(
        MoDiffFloatComparison().performStringDiff("m", "a", masterBuffer.get(), actualBuffer.get()));
    MO_FUZZ_REQUIRE(std::memcmp(masterBuffer.get(), master.c_str(), master.size() + 1) == 0);
    MO_FUZZ_REQUIRE(std::memcmp(actualBuffer.get(), actual.c_str(), actual.size() + 1) == 0);
    MoDiffResult const& outcome = *result;
    MO_FUZZ_REQUIRE(typeid(outcome) == expectedResult(numbersIn(master.c_str()), numbersIn(actual.c_str())));
    return 0;
}
