#include "MoDiffCharacterFrequency.h"

#include <cstring>

namespace {

bool isMarkup(unsigned char character) {
    return character && std::strchr("\"<>=/", character);
}

} // namespace

double MoDiffCharacterFrequency::of(unsigned char character) {
    static char const kCommon[] = " etaoinsrdlcu";
    if (isMarkup(character))
        return 25;
    if (character && std::strchr(kCommon, character))
        return 45;
    if (character >= 'a' && character <= 'z')
        return 12;
    if (character >= '0' && character <= '9')
        return 15;
    return character == '\n' ? 15 : 3;
}

double MoDiffCharacterFrequency::ofPair(unsigned char first, unsigned char second) {
    double const independent = of(first) * of(second);
    bool const isFirst = isMarkup(first);
    bool const isSecond = isMarkup(second);
    return isFirst && isSecond ? independent * 40 : isFirst || isSecond ? independent * 3 : independent;
}
