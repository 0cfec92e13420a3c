#ifndef MO_GENERATED_TEXTS_H
#define MO_GENERATED_TEXTS_H

#include <cstddef>
#include <random>
#include <string>
#include <utility>
#include <vector>

/// Reports by chance, the same for the same seed.
class MoGeneratedTexts {
public:
    explicit MoGeneratedTexts(unsigned seed) : m_random(seed) {}

    /// A number below the bound.
    std::size_t below(std::size_t bound) { return m_random() % bound; }

    /// Pieces that make tags, numbers, quotes, lines, scripts, characters of several bytes and broken ones meet.
    std::string text(std::size_t pieces) {
        static std::vector<std::string> const all = {"<td class=\"a\">",
                                                     "</td>",
                                                     "<tr>",
                                                     "Total",
                                                     " ",
                                                     "\n",
                                                     "\r\n",
                                                     "1,234.5",
                                                     "-7",
                                                     "e",
                                                     "\xC3\xA9",
                                                     "\xE2\x82\xAC",
                                                     "\xFF",
                                                     "\xC3",
                                                     "\"",
                                                     ",",
                                                     "  \n  ",
                                                     "word",
                                                     "<script>x</script>",
                                                     "<",
                                                     ">",
                                                     "name=\"chart1\"",
                                                     "Page 1 of 3"};
        std::string result;
        for (std::size_t i = 0; i < pieces; ++i)
            result += all[below(all.size())];
        return result;
    }

    /// A text and another one with some places changed.
    std::pair<std::string, std::string> pair(std::size_t pieces, std::size_t changes) {
        std::string const master = text(pieces);
        std::string actual = master;
        for (std::size_t i = 0; i < changes; ++i)
            actual.replace(below(actual.size() + 1), below(9), text(below(4)));
        return {master, actual};
    }

private:
    std::mt19937 m_random;
};

#endif
