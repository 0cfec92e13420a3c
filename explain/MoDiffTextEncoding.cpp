#include "MoDiffTextEncoding.h"

#include "MoUtf8.h"

#include <algorithm>
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

std::size_t markLength(Encoding encoding) {
    return encoding == eUtf8WithMark ? 3 : encoding == eUtf16Little || encoding == eUtf16Big ? 2 : 0;
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
        : Characters(file.substr(markLength(encodingOf(file))), encodingOf(file)) {}
    /// A part of a file, without its mark.
    Characters(std::string_view part, Encoding encoding) : m_encoding(encoding), m_rest(part) {}

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

MoDiffTextEncoding::Beginning::Beginning(std::string_view file, std::size_t room)
    : m_encoding(encodingOf(file)), m_room(room), m_skip(markLength(encodingOf(file))) {
}

void MoDiffTextEncoding::Beginning::append(std::string_view part) {
    std::size_t const skipped = std::min(m_skip, part.size());
    part.remove_prefix(skipped);
    m_skip -= skipped;
    if (m_encoding == eUtf8 || m_encoding == eUtf8WithMark) {
        m_size += part.size();
        m_text.append(part.substr(0, m_room - std::min(m_room, m_text.size())));
        return;
    }
    for (Characters characters(part, static_cast<Encoding>(m_encoding)); !characters.isAtEnd();) {
        UChar32 const character = characters.next();
        m_size += static_cast<std::size_t>(U8_LENGTH(character));
        if (m_text.size() < m_room)
            ::append(character, m_text);
    }
}

bool MoDiffTextEncoding::haveSameCharacters(std::string_view first, std::string_view second) {
    Characters left(first);
    Characters right(second);
    while (!left.isAtEnd() && !right.isAtEnd())
        if (left.next() != right.next())
            return false;
    return left.isAtEnd() && right.isAtEnd();
}
