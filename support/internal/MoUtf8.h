#ifndef MO_UTF8_H
#define MO_UTF8_H

#include <cstddef>

/// Reads UTF-8 without losing a byte: one that is not part of a valid sequence counts as a character of its own.
namespace MoUtf8 {

/// The character that stands for an invalid byte b is kInvalidBase + b: a low surrogate, which valid UTF-8 never
/// yields.
constexpr char32_t kInvalidBase = 0xDC00;

struct Character {
    char32_t code;
    unsigned length; // in bytes, 1 to 4
};

inline bool isInvalidByte(char32_t code) {
    return code >= kInvalidBase + 0x80 && code <= kInvalidBase + 0xFF;
}

inline bool isContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

/// Decodes the character at text, which is before end.
inline Character decode(unsigned char const* text, unsigned char const* end) {
    unsigned char const lead = *text;
    if (lead < 0x80)
        return {lead, 1};
    Character const invalid = {kInvalidBase + lead, 1};
    unsigned const length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || static_cast<std::size_t>(end - text) < length)
        return invalid;
    char32_t code = lead & (0x7FU >> length);
    for (unsigned i = 1; i < length; ++i) {
        if (!isContinuation(text[i]))
            return invalid;
        code = code << 6 | (text[i] & 0x3FU);
    }
    bool const overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    bool const surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (overlong || surrogate || code > 0x10FFFF)
        return invalid;
    return {code, length};
}

/// Decodes the character that ends at text, which is after begin; end is where the whole text ends.
inline Character decodeBefore(unsigned char const* begin, unsigned char const* text, unsigned char const* end) {
    for (unsigned back = 1; back <= 4 && begin + back <= text; ++back) {
        unsigned char const* const start = text - back;
        if (isContinuation(*start))
            continue;
        Character const character = decode(start, end);
        if (character.length == back)
            return character;
        break;
    }
    unsigned char const last = text[-1];
    return {last < 0x80 ? last : kInvalidBase + last, 1};
}

} // namespace MoUtf8

#endif
