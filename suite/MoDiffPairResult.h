#ifndef MO_DIFF_PAIR_RESULT_H
#define MO_DIFF_PAIR_RESULT_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What came of a pair. The words are those of the record.
enum class MoDiffOutcome {
    ePassed,
    eDifferent,
    eMissing, ///< no actual file
    eError,   ///< no verdict: an assertion, an unreadable file, a script that could not compare, a text with a NUL
    eCrashed, ///< the process that compared it ended by a signal
    eTimeout,
    eMemory,
    eExpected,          ///< different or missing, as the configuration expects
    eUnexpectedlyPassed ///< passed although the configuration expects a difference
};

std::size_t constexpr kMoDiffOutcomes = 9;

/// The record's word for an outcome, for example "unexpectedly-passed".
char const* wordOf(MoDiffOutcome outcome);
/// The outcome for a word; none for an unknown one.
std::optional<MoDiffOutcome> outcomeOf(std::string const& word);
/// Whether an outcome makes a run fail: anything but passed and expected.
bool isFailure(MoDiffOutcome outcome);

/// A value for both sides of a pair.
template<typename Value>
struct MoDiffBothSides {
    Value master{};
    Value actual{};
};

/// The bytes that one pattern deleted.
struct MoDiffPatternCount {
    std::string
        name; ///< as in the catalogue: "Script", "Newline"; "CarriageReturn" for what goes before all patterns
    MoDiffBothSides<std::uint64_t> bytes;
};

/// Where two texts part, and what stands there.
struct MoDiffDifference {
    std::uint64_t position = 0;          ///< in the cleansed texts, or in the files where nothing is cleansed
    std::uint64_t line = 0;              ///< of the master, from 1; 0 for cleansed texts, whose lines nobody knows
    MoDiffBothSides<std::string> before; ///< bytes in front of the place, unescaped, clipped
    MoDiffBothSides<std::string> after;  ///< bytes from the place on, unescaped, clipped
};

/// All that is known of a compared pair: a line of the record.
struct MoDiffPairResult {
    std::string id;
    std::string format;
    std::string subDirectory;
    std::string master;
    std::string actual;
    MoDiffOutcome outcome = MoDiffOutcome::eError;
    std::string detail; ///< one sentence: why it did not pass, "" when there is nothing to say
    std::vector<std::string> warnings;
    double seconds = 0;
    std::optional<MoDiffBothSides<std::uint64_t>> bytes;
    MoDiffBothSides<std::string> hash; ///< XXH3 of 128 bits, 32 hex digits; "" when the file could not be read
    std::optional<MoDiffBothSides<std::uint64_t>> hidden; ///< bytes deleted by cleansing
    std::vector<MoDiffPatternCount> patterns;
    std::optional<MoDiffDifference> difference;
    std::string output;     ///< a script's words, clipped and saying so
    std::string resultFile; ///< where a script's complete list of differences lies; "" without one
};

#endif
