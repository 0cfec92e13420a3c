#include "MoDiffShellWord.h"

std::string MoDiffShellWord::quoted(std::string const& text) {
    std::string word = "'";
    for (char const letter : text)
        word += letter == '\'' ? "'\\''" : std::string(1, letter);
    return word + "'";
}

std::string MoDiffShellWord::asNeeded(std::string const& text) {
    char const harmless[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./:=,@%+-";
    bool const isHarmless = !text.empty() && text.find_first_not_of(harmless) == std::string::npos;
    return isHarmless ? text : quoted(text);
}
