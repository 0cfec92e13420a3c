#ifndef MO_DIFF_JUNIT_H
#define MO_DIFF_JUNIT_H

#include "MoDiffPairSetups.h"
#include "MoDiffRecordPairs.h"

#include <cstddef>
#include <iosfwd>

/// The pairs of a record as test cases in the XML that CI servers read.
namespace MoDiffJunit {

/// Sizes in bytes of XML.
struct Limits {
    std::size_t mostBytes = 28'000'000;          ///< of all; GitLab refuses 30 MB
    std::size_t mostText = std::size_t{1} << 16; ///< of what is told of one pair beside its attributes
};

/// Writes a suite for each format and a case for each pair, in the byte order of the ids. Different, missing and
/// unexpectedly passed pairs are failures, with what differs as `modiff show` tells it; those without a verdict are
/// errors, expected ones are skipped. New files that made the run fail are failures, and a record that is incomplete
/// is an error. What the limits leave out is said where it is missing: texts are clipped, all to the same length,
/// before cases are left out, first of pairs that passed.
///
/// Well-formed whatever names and files hold. Reads the files of pairs that differ, one pair at a time; the current
/// directory must be the working directory. Raises std::bad_alloc only; whether writing failed the stream tells.
void write(MoDiffRecordPairs const& record, MoDiffPairSetups& setups, Limits const& limits, std::ostream& out);

} // namespace MoDiffJunit

#endif
