#ifndef MO_DIFF_EXIT_STATUS_H
#define MO_DIFF_EXIT_STATUS_H

/// What modiff's exit status tells. When several apply, trouble counts before a difference, and a difference before
/// a report for which there was nothing to compare.
enum MoDiffExitStatus { eExitPassed = 0, eExitDifferent = 1, eExitTrouble = 2, eExitNothingCompared = 3 };

#endif
