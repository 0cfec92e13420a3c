#ifndef MO_DIFF_ANNOTATIONS_H
#define MO_DIFF_ANNOTATIONS_H

#include "MoDiffPairSetups.h"
#include "MoDiffRecordPairs.h"

#include <cstddef>
#include <iosfwd>
#include <string>

/// What did not pass, as notes of a CI server at the lines of masters.
namespace MoDiffAnnotations {

/// GitHub shows no more errors of one step.
std::size_t constexpr kMostErrors = 10;

/// Writes workflow commands of GitHub: an error for what did not pass, what has no verdict first, and a notice that
/// counts those beyond kMostErrors. New files that made the run fail and an incomplete record are errors, too. Writes
/// nothing when all passed.
///
/// An error stands at the first line of the master that differs, if the master can be named from the workspace and
/// both files are what they were. Reads the files of as many pairs; the current directory must be the working
/// directory. Raises std::bad_alloc only; whether writing failed the stream tells.
/// @param workspace the directory of the repository; "" when it isn't known
void writeForGitHub(MoDiffRecordPairs const& record, MoDiffPairSetups& setups, std::string const& workspace,
                    std::ostream& out);

} // namespace MoDiffAnnotations

#endif
