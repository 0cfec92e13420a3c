#ifndef MO_DIFF_NUMBERS_H
#define MO_DIFF_NUMBERS_H

#include <string>

class MoDiffConsole;

namespace MoDiffNumbers {

/// Compares the numbers in two files or pipes and shows the result, with the first pair that disagrees. Raises an
/// error that names the file when one cannot be read or is not a text.
/// @return whether they agree
bool compare(std::string const& masterName, std::string const& actualName, MoDiffConsole& console);

} // namespace MoDiffNumbers

#endif
