#include "MoDiffShownText.h"

#include "MoUtf8.h"

#include <algorithm>
#include <deque>
#include <unicode/uchar.h>

namespace {

std::size_t const kColumnsBefore = 32;
std::size_t const kColumnsAfter = 44;
std::size_t const kMostBytes = 4; // of one character
char const kMore[] = "...";

/// A character, or a byte that belongs to none, and how it is shown.
struct Unit {
    std::size_t bytes;
    std::string shown;
    std::size_t columns;
};

bool isContinuation(char byte) {
    return MoUtf8::isContinuation(static_cast<unsigned char>(byte));
}

std::string hexEscape(char byte) {
    char const digits[] = "0123456789abcdef";
    auto const value = static_cast<unsigned char>(byte);
    return {'\\', 'x', digits[value >> 4], digits[value & 15]};
}

std::string byteEscape(char byte) {
    switch (byte) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    case '\\':
        return "\\\\";
    default:
        return hexEscape(byte);
    }
}

MoUtf8::Character firstCharacter(std::string_view text) {
    auto const* const begin = reinterpret_cast<unsigned char const*>(text.data());
    return MoUtf8::decode(begin, begin + text.size());
}

bool isShown(UChar32 codePoint) { // a byte that is not UTF-8 comes as a surrogate
    uint32_t const invisible = U_GC_C_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK; // direction marks and soft hyphens, too
    return (U_GET_GC_MASK(codePoint) & invisible) == 0;
}

std::size_t columnsOf(UChar32 codePoint) {
    if (U_GET_GC_MASK(codePoint) & (U_GC_MN_MASK | U_GC_ME_MASK))
        return 0;
    int32_t const width = u_getIntPropertyValue(codePoint, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

/// The first unit of a text that is not empty.
Unit firstUnit(std::string_view text) {
    char const byte = text.front();
    if (byte >= ' ' && byte <= '~' && byte != '\\')
        return {1, std::string(1, byte), 1};
    MoUtf8::Character const character = firstCharacter(text);
    auto const codePoint = static_cast<UChar32>(character.code);
    std::string_view const bytes = text.substr(0, character.length);
    if (codePoint < 0x80) {
        std::string escape = byteEscape(byte);
        return {1, escape, escape.size()};
    }
    if (isShown(codePoint))
        return {bytes.size(), std::string(bytes), columnsOf(codePoint)};
    std::string escapes;
    for (char const part : bytes)
        escapes += hexEscape(part);
    return {bytes.size(), escapes, escapes.size()};
}

/// The units of a text from its end back until the columns are used up, in the text's order.
std::deque<Unit> lastUnits(std::string_view text, std::size_t columns) {
    std::size_t const reach = columns * kMostBytes;
    if (text.size() > reach) {
        text.remove_prefix(text.size() - reach);
        for (std::size_t cut = 1; cut < kMostBytes && isContinuation(text.front()); ++cut)
            text.remove_prefix(1);
    }
    std::deque<Unit> units;
    std::size_t used = 0;
    while (!text.empty()) {
        units.push_back(firstUnit(text));
        text.remove_prefix(units.back().bytes);
        for (used += units.back().columns; used > columns; units.pop_front())
            used -= units.front().columns;
    }
    return units;
}

} // namespace

std::string MoDiffShownText::escaped(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        Unit const unit = firstUnit(text);
        shown += unit.shown;
        text.remove_prefix(unit.bytes);
    }
    return shown;
}

MoDiffShownText::Excerpt MoDiffShownText::excerpt(std::string_view text, std::size_t place) {
    place = std::min(place, text.size());
    Excerpt result = {"", "", 0};
    std::size_t bytesBefore = 0;
    for (Unit const& unit : lastUnits(text.substr(0, place), kColumnsBefore)) {
        result.before += unit.shown;
        result.columnsBefore += unit.columns;
        bytesBefore += unit.bytes;
    }
    if (bytesBefore < place) {
        result.before.insert(0, kMore);
        result.columnsBefore += sizeof kMore - 1;
    }
    std::size_t columns = 0;
    for (text.remove_prefix(place);
         !text.empty() && columns < kColumnsAfter && result.after.size() < kColumnsAfter * kMostBytes;) {
        Unit const unit = firstUnit(text);
        result.after += unit.shown;
        columns += unit.columns;
        text.remove_prefix(unit.bytes);
    }
    if (!text.empty())
        result.after += kMore;
    return result;
}

std::size_t MoDiffShownText::characterStart(std::string_view text, std::size_t place) {
    std::size_t const furthest = std::min(place, kMostBytes - 1);
    for (std::size_t back = 1; back <= furthest; ++back) {
        std::size_t const start = place - back;
        if (start + firstCharacter(text.substr(start)).length > place)
            return start;
    }
    return place;
}
