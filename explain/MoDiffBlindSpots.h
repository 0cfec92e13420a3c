#ifndef MO_DIFF_BLIND_SPOTS_H
#define MO_DIFF_BLIND_SPOTS_H

#include "MoDiffSourceText.h"

#include <string>
#include <vector>

/// What cleansing keeps from being compared. A gap is what it deletes between two neighbours of the cleansed text, by
/// however many patterns.
namespace MoDiffBlindSpots {

/// A gap of which both sides differ.
struct Difference {
    MoDiffBothSides<MoDiffRange> gap; ///< in the files; empty where a side has nothing
    MoDiffBothSides<std::size_t>
        firstByte;                     ///< in the files: where it begins to differ, in more than carriage returns
    std::vector<std::string> patterns; ///< those that deleted different bytes
    bool isOfReturns;                  ///< it differs in carriage returns only
};

/// The gaps that differ, in the order of the files, of two files with the same cleansed text.
std::vector<Difference> findDifferences(MoDiffBothSides<MoDiffSourceText> const& sources);

/// A gap that takes a whole rest with it, and the pattern that deleted most of it.
struct Rest {
    MoDiffRange gap; ///< in the file
    std::string pattern;
};

/// Gaps that are more than half of the file, or reach its end and are no mere trailing blanks.
std::vector<Rest> findRests(MoDiffSourceText const& source);

/// What hides a byte of the file: the pattern that deletes it, "NUL" behind the first one; "" when it is compared.
std::string hiderOf(MoDiffSourceText const& source, std::size_t fileIndex);

} // namespace MoDiffBlindSpots

#endif
