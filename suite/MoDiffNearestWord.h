#ifndef MO_DIFF_NEAREST_WORD_H
#define MO_DIFF_NEAREST_WORD_H

#include <string>
#include <vector>

/// Guesses what a misspelt word was to be.
namespace MoDiffNearestWord {

/// The word that differs least from a given one: by letters put in, left out, replaced or swapped with their
/// neighbour, in either case. "" when none is near; of equally near ones the first.
std::string find(std::string const& word, std::vector<std::string> const& words);

/// A sentence's end: "; did you mean WORD?", or the list of all words when none is near.
std::string hint(std::string const& word, std::vector<std::string> const& words);

} // namespace MoDiffNearestWord

#endif
