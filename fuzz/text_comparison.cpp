// Two files and a list of patterns, compared as files and as texts, against a comparison in the plainest way. Input:
// the choice of patterns, two texts (see MoFuzzInput).

#include "MoCleansingMapCheck.h"
#include "MoDiffLib.h"
#include "MoDiffListener.h"
#include "MoDiffNormalizationPattern.h"
#include "MoDiffNormalizationPatterns.h"
#include "MoDiffResultFailDiffNormalized.h"
#include "MoDiffResultPass.h"
#include "MoFuzz.h"

#include <fstream>
#include <iterator>
#include <typeinfo>

namespace {

using P = MoDiffNormalizationPatterns;

std::size_t const kLongest = 9000; // beyond two of the comparison's steps, which are of 4096 bytes

MoDiffLib::Patterns patternsOf(unsigned choice) {
    MoDiffNormalizationPattern const* const all[] = {&P::getScriptPattern(),        &P::getIdPattern(),
                                                     &P::getOnActionPattern(),      &P::getMhtPattern(),
                                                     &P::getNewlinePattern(),       &P::getBinBindPattern(),
                                                     &P::getFloatingPointPattern(), &P::getChartTempNamePattern()};
    MoDiffLib::Patterns chosen;
    for (unsigned i = 0; i < 8; ++i)
        if (choice >> i & 1U)
            chosen.push_back(all[i]);
    return chosen;
}

/// The text up to its first NUL byte, cleansed, with zeros up to its old end and what was behind.
std::string cleansed(std::string const& text, MoDiffLib::Patterns const& patterns) {
    std::string const head = text.c_str();
    std::string kept;
    std::copy_if(head.begin(), head.end(), std::back_inserter(kept), [](char c) { return c != '\r'; });
    kept.resize(text.size() + 1);
    for (MoDiffNormalizationPattern const* pattern : patterns)
        pattern->normalizeText(kept.data());
    return kept.substr(0, head.size()) + text.substr(head.size()) + '\0';
}

long firstDifference(std::string const& one, std::string const& other) {
    for (std::size_t i = 0;; ++i) {
        if (one[i] != other[i])
            return static_cast<long>(i);
        if (one[i] == '\0')
            return -1;
    }
}

struct Expected {
    std::string master;
    std::string actual;
    long position;
    bool hasPatterns;
};

void check(MoDiffResult const& result, Expected const& expected) {
    auto const* const normalized = dynamic_cast<MoDiffResultFailDiffNormalized const*>(&result);
    MO_FUZZ_REQUIRE(result.isPassed() == (expected.position < 0));
    MO_FUZZ_REQUIRE((normalized != nullptr) == (expected.position >= 0 && expected.hasPatterns));
    MO_FUZZ_REQUIRE(result.isPassed() || normalized || typeid(result) == typeid(MoDiffResultFailDiff));
    if (!normalized)
        return;
    MO_FUZZ_REQUIRE(normalized->getDiffPosition() == expected.position);
    MO_FUZZ_REQUIRE(std::memcmp(normalized->getNormalizedMaster(), expected.master.data(), expected.master.size()) ==
                    0);
    MO_FUZZ_REQUIRE(std::memcmp(normalized->getNormalizedActual(), expected.actual.data(), expected.actual.size()) ==
                    0);
}

void compareBuffers(std::string const& master, std::string const& actual, MoDiffLib::Patterns const& patterns,
                    Expected const& expected) {
    auto masterBuffer = moFuzzBuffer(master);
    auto actualBuffer = moFuzzBuffer(actual);
    std::unique_ptr<MoDiffResult> const result(
        MoDiffLib::textBufferComparison("m", "a", masterBuffer, actualBuffer, patterns, /*writeCleansed=*/0));
    check(*result, expected);
}

std::string read(std::string const& name) {
    std::ifstream in(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

void compareFiles(std::string const& master, std::string const& actual, MoDiffLib::Patterns const& patterns,
                  Expected const& expected, int writeCleansed) {
    static MoFuzzDirectory const directory;
    std::string const names[] = {directory.path() + "/m", directory.path() + "/a"};
    std::ofstream(names[0], std::ios::binary) << master;
    std::ofstream(names[1], std::ios::binary) << actual;
    std::unique_ptr<MoDiffResult> const result(
        MoDiffLib::textFileComparison(names[0], names[1], patterns, writeCleansed));
    check(*result, expected);
    if (writeCleansed) {
        MO_FUZZ_REQUIRE(read(names[0] + ".cleansed") == expected.master.c_str());
        MO_FUZZ_REQUIRE(read(names[1] + ".cleansed") == expected.actual.c_str());
    }
    for (std::string const& name : names) {
        unlink(name.c_str());
        unlink((name + ".cleansed").c_str());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size > kLongest)
        return 0;
    MoFuzzInput input(data, size);
    MoDiffLib::Patterns const patterns = patternsOf(input.byte());
    int const writeCleansed = input.byte() % 4 == 0;
    auto const [master, actual] = input.twoTexts();

    Expected expected = {cleansed(master, patterns), cleansed(actual, patterns), -1, !patterns.empty()};
    expected.position = firstDifference(expected.master, expected.actual);
    MO_FUZZ_REQUIRE(MoDiffLib::compareStrings(expected.master.c_str(), expected.actual.c_str()) == expected.position);
    MO_FUZZ_REQUIRE(faultOfCleansingMap(master, patterns, expected.master.c_str()).empty());
    compareBuffers(master, actual, patterns, expected);
    compareFiles(master, actual, patterns, expected, writeCleansed);
    std::swap(expected.master, expected.actual);
    compareBuffers(actual, master, patterns, expected);
    return 0;
}
