#include "MoDiffNearestWord.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

std::string lowered(std::string word) {
    for (char& letter : word)
        if (letter >= 'A' && letter <= 'Z')
            letter = static_cast<char>(letter - 'A' + 'a');
    return word;
}

/// How many letters must be put in, left out, replaced or swapped with their neighbour. Row i of the classic table
/// holds the distances of the first i letters of `from` to each beginning of `to`; a swap needs the last but one.
std::size_t distance(std::string const& from, std::string const& to) {
    std::array<std::vector<std::size_t>, 3> rows;
    rows.fill(std::vector<std::size_t>(to.size() + 1));
    for (std::size_t column = 0; column <= to.size(); ++column)
        rows[0][column] = column;
    for (std::size_t row = 1; row <= from.size(); ++row) {
        std::vector<std::size_t>& current = rows[row % 3];
        std::vector<std::size_t> const& above = rows[(row - 1) % 3];
        current[0] = row;
        for (std::size_t column = 1; column <= to.size(); ++column) {
            bool const isSame = from[row - 1] == to[column - 1];
            current[column] =
                std::min({above[column] + 1, current[column - 1] + 1, above[column - 1] + (isSame ? 0 : 1)});
            if (row > 1 && column > 1 && from[row - 1] == to[column - 2] && from[row - 2] == to[column - 1])
                current[column] = std::min(current[column], rows[(row - 2) % 3][column - 2] + 1);
        }
    }
    return rows[from.size() % 3][to.size()];
}

} // namespace

std::string MoDiffNearestWord::find(std::string const& word, std::vector<std::string> const& words) {
    std::string nearest;
    std::size_t least = std::string::npos;
    for (std::string const& candidate : words) {
        std::size_t const changes = distance(lowered(word), lowered(candidate));
        bool const isNear = changes * 3 <= std::max(word.size(), candidate.size()); // a typo, not another word
        if (isNear && changes < least) {
            least = changes;
            nearest = candidate;
        }
    }
    return nearest;
}

std::string MoDiffNearestWord::hint(std::string const& word, std::vector<std::string> const& words) {
    std::string const nearest = find(word, words);
    if (!nearest.empty())
        return "; did you mean " + nearest + "?";
    std::string list;
    for (std::string const& known : words)
        list.append(list.empty() ? "" : ", ").append(known);
    return "; choose one of " + list;
}
