#ifndef MO_DIFF_MUTATIONS_H
#define MO_DIFF_MUTATIONS_H

#include "MoDiffPairSetups.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// Tries what a green run is worth: changes bytes of masters one at a time, in copies below a temporary directory,
/// and has the format's engine compare each copy with its master.
///
/// A digit becomes another digit, a letter another one of its case, any other byte its neighbour. Each format gets
/// the same number of changes, those that scripts compare 200 at most, and each byte of its masters the same chance.
/// The same seed changes the same bytes.
class MoDiffMutations {
public:
    struct Options {
        std::size_t count = 0; ///< changes of all formats together
        std::uint64_t seed = 1;
        std::atomic<int> const* signal = nullptr; ///< see MoDiffRunOptions; what was compared until then is counted
    };
    /// What became of the changes in one format.
    struct Outcome {
        std::size_t made = 0;
        std::size_t noticed = 0;    ///< did not pass
        std::size_t unmeasured = 0; ///< of masters of which even an unchanged copy does not pass
        /// The others, by the pattern that hid them; "NUL" for those behind one, kEqual for those that no pattern
        /// hid.
        std::map<std::string, std::size_t> unnoticed;
    };
    using Outcomes = std::map<std::string, Outcome>; ///< by format

    static char const kEqual[]; ///< for a script: what it does not read, or within its tolerance

    /// Compares with the configuration's jobs and limits; the process must have one thread, since it forks. The
    /// current directory must be the working directory, and is another one meanwhile. Raises std::exception when the
    /// copies cannot be written.
    /// @param pairs of a record; those without a master that can be read are passed over
    /// @param changed gets the ids of pairs whose masters are no more what was compared; nothing of them is used
    static Outcomes perform(std::vector<MoDiffPairResult const*> const& pairs, MoDiffPairSetups& setups,
                            MoDiffSuiteConfiguration const& configuration, Options const& options,
                            std::vector<std::string>& changed);
};

#endif
