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

/// Goes through the characters of a file behind its byte-order mark. Of UTF-16, a lone surrogate becomes a
/// replacement character; so does half a unit at the end.
class Characters {
public:
    explicit Characters(std::string_view file)
        : m_encoding(encodingOf(file)),
          m_rest(file.substr(m_encoding == eUtf8WithMark                             ? 3
                             : m_encoding == eUtf16Little || m_encoding == eUtf16Big ? 2
                                                                                     : 0)) {}

    bool isAtEnd() const { return m_rest.empty(); }
    /// Not at the end.
    UChar32 next() {
        switch (m_encoding) {
        case eUtf16Little:
        case eUtf16Big:
            return nextOfUtf16();
        case eLatin:
            return takeByte();
        default:
            break;
        }
        auto const* const bytes = reinterpret_cast<unsigned char const*>(m_rest.data());
        MoUtf8::Character const character = MoUtf8::decode(bytes, bytes + m_rest.size());
        m_rest.remove_prefix(character.length);
        return static_cast<UChar32>(character.code);
    }

private:
    UChar32 nextOfUtf16() {
        UChar32 const unit = takeUnit();
        if (!U16_IS_SURROGATE(unit))
            return unit;
        std::string_view const behind = m_rest;
        UChar32 const trail = U16_IS_SURROGATE_LEAD(unit) && !isAtEnd() ? takeUnit() : 0;
        if (U16_IS_TRAIL(trail))
            return U16_GET_SUPPLEMENTARY(unit, trail);
        m_rest = behind;
        return kReplacement;
    }
    UChar32 takeUnit() {
        if (m_rest.size() == 1) {
            m_rest = {};
            return kReplacement;
        }
        UChar32 const first = takeByte();
        UChar32 const second = takeByte();
        return m_encoding == eUtf16Little ? second << 8 | first : first << 8 | second;
    }
    UChar32 takeByte() {
        auto const byte = static_cast<unsigned char>(m_rest.front());
        m_rest.remove_prefix(1);
        return byte;
    }

    static UChar32 constexpr kReplacement = 0xFFFD;

    Encoding m_encoding;
    std::string_view m_rest;
};

} // namespace

char const* MoDiffTextEncoding::nameOf(std::string_view file) {
    static char const* const names[] = {"UTF-8", "UTF-8 with byte-order mark", "UTF-16, little end first",
                                        "UTF-16, big end first", "ISO 8859-1 or a relative"};
    return names[encodingOf(file)];
}

std::string MoDiffTextEncoding::toUtf8(std::string_view file) {
    Encoding const encoding = encodingOf(file);
    if (encoding == eUtf8 || encoding == eUtf8WithMark)
        return std::string(file.substr(encoding == eUtf8 ? 0 : 3));
    std::string text;
    for (Characters characters(file); !characters.isAtEnd();)
        append(characters.next(), text);
    return text;
}

bool MoDiffTextEncoding::haveSameCharacters(std::string_view first, std::string_view second) {
    Characters left(first);
    Characters right(second);
    while (!left.isAtEnd() && !right.isAtEnd())
        if (left.next() != right.next())
            return false;
    return left.isAtEnd() && right.isAtEnd();
}
