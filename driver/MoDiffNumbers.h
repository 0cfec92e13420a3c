#ifndef MO_DIFF_NUMBERS_H
#define MO_DIFF_NUMBERS_H

#include <string>

class MoDiffConsole;

namespace MoDiffNumbers {

/// Compares the numbers in two files and shows the result, with the first pair that disagrees. Raises an error when
/// a file is not a text.
void compare(std::string const& masterName, std::string const& actualName, MoDiffConsole& console);

} // namespace MoDiffNumbers

#endif
