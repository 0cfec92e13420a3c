#include "MoDiffShellWord.h"

std::string MoDiffShellWord::quoted(std::string const& text) {
    std::string word = "'";
    for (char const letter : text)
        word += letter == '\'' ? "'\\''" : std::string(1, letter);
    return word + "'";
}
