#include "MoDiffShownText.h"

#include "MoUtf8.h"

#include <algorithm>
#include <deque>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uspoof.h>

using MoDiffShownText::Excerpt;

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

Unit escapedUnit(std::string_view bytes) {
    std::string escapes;
    for (char const byte : bytes)
        escapes += byteEscape(byte);
    return {bytes.size(), escapes, escapes.size()};
}

/// The first unit of a text that is not empty.
Unit firstUnit(std::string_view text) {
    char const byte = text.front();
    if (byte >= ' ' && byte <= '~' && byte != '\\')
        return {1, std::string(1, byte), 1};
    MoUtf8::Character const character = firstCharacter(text);
    auto const codePoint = static_cast<UChar32>(character.code);
    std::string_view const bytes = text.substr(0, character.length);
    if (codePoint < 0x80 || !isShown(codePoint))
        return escapedUnit(bytes);
    return {bytes.size(), std::string(bytes), columnsOf(codePoint)};
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

bool isMark(UChar32 codePoint) {
    return (U_GET_GC_MASK(codePoint) & (U_GC_MN_MASK | U_GC_ME_MASK)) != 0;
}

/// A text in one piece again, and how many bytes before the place the character begins that holds it.
struct Cut {
    explicit Cut(MoDiffShownText::Surroundings const& around)
        : text(std::string(around.before).append(around.after)), place(around.before.size()),
          back(bytesBack(text, place)) {}

    std::size_t start(std::size_t bytes) const { return place - std::min(bytes, place); }
    std::string_view rest(std::size_t bytes) const { return std::string_view(text).substr(start(bytes)); }

    static std::size_t bytesBack(std::string_view text, std::size_t place) {
        for (std::size_t back = 1; back <= std::min(place, kMostBytes - 1); ++back)
            if (firstCharacter(text.substr(place - back)).length > back)
                return back;
        return 0;
    }

    std::string text;
    std::size_t place;
    std::size_t back;
};

/// The character with which a text begins, and the marks upon it.
std::string_view firstCluster(std::string_view text) {
    std::size_t length = text.empty() ? 0 : firstCharacter(text).length;
    while (length < text.size()) {
        MoUtf8::Character const next = firstCharacter(text.substr(length));
        if (!isMark(static_cast<UChar32>(next.code)))
            break;
        length += next.length;
    }
    return text.substr(0, length);
}

bool beginsWithMark(std::string_view text) {
    return !text.empty() && isMark(static_cast<UChar32>(firstCharacter(text).code));
}

/// The same for all texts that look the same; empty when it is not known.
std::string skeletonOf(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    icu::LocalUSpoofCheckerPointer const checker(uspoof_open(&status));
    if (U_FAILURE(status))
        return "";
    icu::UnicodeString const source = icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
    icu::UnicodeString skeleton;
    uspoof_getSkeletonUnicodeString(checker.getAlias(), 0, source, skeleton, &status);
    std::string bytes;
    return U_FAILURE(status) ? "" : skeleton.toUTF8String(bytes);
}

bool lookAlike(std::string_view one, std::string_view other) {
    if (one.empty() || other.empty())
        return false;
    std::string const skeleton = skeletonOf(one);
    return !skeleton.empty() && skeleton == skeletonOf(other);
}

/// The excerpt with the first bytes behind the place shown as escapes, ASCII apart.
Excerpt excerptWithEscapes(std::string_view text, std::size_t place, std::size_t bytesEscaped) {
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
        bool const isEscaped = bytesEscaped > 0 && (text.front() & 0x80);
        Unit const unit = isEscaped ? escapedUnit(text.substr(0, firstCharacter(text).length)) : firstUnit(text);
        bytesEscaped -= std::min(bytesEscaped, unit.bytes);
        result.after += unit.shown;
        columns += unit.columns;
        text.remove_prefix(unit.bytes);
    }
    if (!text.empty())
        result.after += kMore;
    return result;
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

std::string MoDiffShownText::printable(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        Unit const unit = firstUnit(text);
        shown += text.front() == '\\' ? "\\" : unit.shown;
        text.remove_prefix(unit.bytes);
    }
    return shown;
}

std::string MoDiffShownText::escapedEnd(std::string_view text, std::size_t columns) {
    std::size_t const room = columns - std::min(columns, sizeof kMore - 1);
    std::string end;
    std::size_t bytes = 0;
    for (Unit const& unit : lastUnits(text, columns)) {
        end += unit.shown;
        bytes += unit.bytes;
    }
    if (bytes == text.size())
        return end;
    end = kMore;
    for (Unit const& unit : lastUnits(text, room))
        end += unit.shown;
    return end;
}

Excerpt MoDiffShownText::excerpt(std::string_view text, std::size_t place) {
    return excerptWithEscapes(text, place, 0);
}

MoDiffShownText::Excerpts MoDiffShownText::excerpts(Surroundings const& master, Surroundings const& actual) {
    Cut const masterCut(master);
    Cut const actualCut(actual);
    std::size_t const back = std::max(masterCut.back, actualCut.back); // the character begins before the place
    std::string_view const masterRest = masterCut.rest(back);
    std::string_view const actualRest = actualCut.rest(back);
    std::string_view const masterCluster = firstCluster(masterRest);
    std::string_view const actualCluster = firstCluster(actualRest);
    bool const escape =
        beginsWithMark(masterRest) || beginsWithMark(actualRest) || lookAlike(masterCluster, actualCluster);
    return {excerptWithEscapes(masterCut.text, masterCut.start(back), escape ? masterCluster.size() : 0),
            excerptWithEscapes(actualCut.text, actualCut.start(back), escape ? actualCluster.size() : 0)};
}

MoDiffShownText::Fit MoDiffShownText::fit(std::string_view escapedText, std::size_t columns) {
    Fit result = {0, 0};
    while (result.bytes < escapedText.size()) {
        MoUtf8::Character const character = firstCharacter(escapedText.substr(result.bytes));
        std::size_t const wider = result.columns + columnsOf(static_cast<UChar32>(character.code));
        if (wider > columns)
            break;
        result = {result.bytes + character.length, wider};
    }
    return result;
}
