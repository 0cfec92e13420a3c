#ifndef MO_DIFF_FIRST_DIFFERENCE_H
#define MO_DIFF_FIRST_DIFFERENCE_H

#include <cstddef>
#include <optional>
#include <string>

/// Where two files part, with some bytes before and behind.
struct MoDiffFirstDifference {
    unsigned long long line;     ///< of the master, from 1
    unsigned long long position; ///< in bytes from the beginning, those that don't count left out
    std::string master;          ///< a part of the file
    std::string actual;
    std::size_t place; ///< where the two parts differ

    /// Reads both files up to their first difference, in constant memory. None when there is no difference or a
    /// file cannot be read.
    /// @param withoutReturns whether carriage returns don't count
    static std::optional<MoDiffFirstDifference> find(std::string const& masterName, std::string const& actualName,
                                                     bool withoutReturns);
};

#endif
