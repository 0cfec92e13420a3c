#include "MoDiffTextEncoding.h"

#include "MoUtf8.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace {

enum Encoding { eUtf8, eUtf8WithMark, eUtf16Little, eUtf16Big, eLatin };

bool isUtf8(std::string_view file) {
    auto const* at = reinterpret_cast<unsigned char const*>(file.data());
    auto const* const end = at + file.size();
    while (at < end) {
        MoUtf8::Character const character = MoUtf8::decode(at, end);
        if (MoUtf8::isInvalidByte(character.code))
            return false;
        at += character.length;
    }
    return true;
}

Encoding encodingOf(std::string_view file) {
    if (file.substr(0, 3) == "\xEF\xBB\xBF")
        return eUtf8WithMark;
    if (file.substr(0, 2) == "\xFF\xFE")
        return eUtf16Little;
    if (file.substr(0, 2) == "\xFE\xFF")
        return eUtf16Big;
    return isUtf8(file) ? eUtf8 : eLatin;
}

void append(UChar32 codePoint, std::string& text) {
    char bytes[U8_MAX_LENGTH];
    int32_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, codePoint);
    text.append(bytes, static_cast<std::size_t>(length));
}

/// A lone surrogate becomes a replacement character; so does half a unit at the end.
std::string fromUtf16(std::string_view file, bool littleEnd) {
    std::u16string units;
    for (std::size_t at = 2; at + 1 < file.size(); at += 2) {
        auto const first = static_cast<unsigned char>(file[at]);
        auto const second = static_cast<unsigned char>(file[at + 1]);
        units += static_cast<char16_t>(littleEnd ? second << 8 | first : first << 8 | second);
    }
    std::string text;
    for (std::size_t at = 0; at < units.size();) {
        UChar32 codePoint = 0;
        U16_NEXT_OR_FFFD(units.data(), at, units.size(), codePoint);
        append(codePoint, text);
    }
    if (file.size() % 2 != 0)
        append(0xFFFD, text);
    return text;
}

} // namespace

char const* MoDiffTextEncoding::nameOf(std::string_view file) {
    static char const* const names[] = {"UTF-8", "UTF-8 with byte-order mark", "UTF-16, little end first",
                                        "UTF-16, big end first", "ISO 8859-1 or a relative"};
    return names[encodingOf(file)];
}

std::string MoDiffTextEncoding::toUtf8(std::string_view file) {
    Encoding const encoding = encodingOf(file);
    switch (encoding) {
    case eUtf8:
        return std::string(file);
    case eUtf8WithMark:
        return std::string(file.substr(3));
    case eUtf16Little:
    case eUtf16Big:
        return fromUtf16(file, encoding == eUtf16Little);
    case eLatin:
        break;
    }
    std::string text;
    for (char const byte : file)
        append(static_cast<unsigned char>(byte), text);
    return text;
}
