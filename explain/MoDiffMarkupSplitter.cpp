#include "MoDiffMarkupSplitter.h"

#include "MoUtf8.h"

#include <array>
#include <cstring>
#include <unicode/uchar.h>

namespace {

enum Kind : unsigned char { ePunctuation, eWord, eDigit, eBlank, eLineEnd, eReturn, eBeyondAscii };

Kind kindOfAscii(unsigned char byte) {
    if (byte >= 0x80)
        return eBeyondAscii;
    if (byte >= '0' && byte <= '9')
        return eDigit;
    if ((byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_')
        return eWord;
    switch (byte) {
    case '\n':
        return eLineEnd;
    case '\r':
        return eReturn;
    case ' ':
    case '\t':
    case '\f':
    case '\v':
        return eBlank;
    default:
        return ePunctuation;
    }
}

std::array<Kind, 256> const kKinds = [] {
    std::array<Kind, 256> kinds{};
    for (unsigned byte = 0; byte < kinds.size(); ++byte)
        kinds[byte] = kindOfAscii(static_cast<unsigned char>(byte));
    return kinds;
}();

Kind kindOf(char byte) {
    return kKinds[static_cast<unsigned char>(byte)];
}

struct Character {
    Kind kind;
    std::size_t length;
};

/// A byte that is not UTF-8 counts as part of a word: texts in one-byte encodings have letters there.
Character characterAt(std::string_view text, std::size_t at) {
    Kind const kind = kindOf(text[at]);
    if (kind != eBeyondAscii)
        return {kind, 1};
    auto const* const begin = reinterpret_cast<unsigned char const*>(text.data());
    MoUtf8::Character const character = MoUtf8::decode(begin + at, begin + text.size());
    if (MoUtf8::isInvalidByte(character.code))
        return {eWord, 1};
    auto const codePoint = static_cast<UChar32>(character.code);
    bool const inWord = u_isalnum(codePoint) || (U_GET_GC_MASK(codePoint) & U_GC_M_MASK) != 0;
    return {inWord ? eWord : u_isspace(codePoint) ? eBlank : ePunctuation, character.length};
}

std::size_t digitsEnd(std::string_view text, std::size_t from) {
    while (from < text.size() && kindOf(text[from]) == eDigit)
        ++from;
    return from;
}

std::size_t exponentEnd(std::string_view text, std::size_t from) {
    if (from >= text.size() || (text[from] != 'e' && text[from] != 'E'))
        return from;
    std::size_t digits = from + 1;
    if (digits < text.size() && (text[digits] == '+' || text[digits] == '-'))
        ++digits;
    std::size_t const end = digitsEnd(text, digits);
    bool const inWord = end < text.size() && characterAt(text, end).kind == eWord;
    return end == digits || inWord ? from : end;
}

bool isInWord(char before) {
    Kind const kind = kindOf(before);
    return kind == eWord || kind == eDigit || kind == eBeyondAscii;
}

/// Where a run of one kind ends; words take digits along.
std::size_t runEnd(std::string_view text, std::size_t from, Character first) {
    std::size_t end = from + first.length;
    while (end < text.size()) {
        Character const next = characterAt(text, end);
        if (next.kind != first.kind && !(first.kind == eWord && next.kind == eDigit))
            break;
        end += next.length;
    }
    return end;
}

bool opensTag(std::string_view text, std::size_t at) {
    if (text[at] != '<' || at + 1 >= text.size())
        return false;
    char const next = text[at + 1];
    return next == '/' || next == '!' || next == '?' || kindOf(next) == eWord;
}

/// Where a tag ends that begins at an index; the same index when it does not end before the next one.
std::size_t tagEnd(std::string_view text, std::size_t from) {
    std::size_t const end = text.find_first_of("<>", from + 1);
    return end == std::string_view::npos || text[end] == '<' ? from : end + 1;
}

// Lines end behind one blank in eight where nothing else ends them; none is longer than this many bytes.
std::size_t const kLongestLine = 1 << 13;
std::size_t const kBytesThatChoose = 8;

bool choosesEnd(std::string_view text, std::size_t blank, std::size_t from) {
    if (blank < from + kBytesThatChoose)
        return false;
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text.data() + blank - kBytesThatChoose, kBytesThatChoose);
    return (bytes * 0x9E3779B97F4A7C15U) >> 61 == 0;
}

} // namespace

std::size_t MoDiffMarkupSplitter::numberEnd(std::string_view text, std::size_t from) {
    std::size_t at = from;
    if (at < text.size() && (text[at] == '-' || text[at] == '+') && (at == 0 || !isInWord(text[at - 1])))
        ++at;
    std::size_t end = digitsEnd(text, at);
    if (end == at)
        return from;
    while (end < text.size() && (text[end] == '.' || text[end] == ',' || text[end] == '\'')) {
        std::size_t const groupEnd = digitsEnd(text, end + 1);
        if (groupEnd == end + 1)
            break;
        end = groupEnd;
    }
    return exponentEnd(text, end);
}

std::size_t MoDiffMarkupSplitter::wordEnd(std::string_view text, std::size_t from) const {
    Character const first = characterAt(text, from);
    switch (first.kind) {
    case eReturn:
        return from + (from + 1 < text.size() && text[from + 1] == '\n' ? 2 : 1);
    case eWord:
    case eBlank:
        return runEnd(text, from, first);
    case eDigit:
    case ePunctuation:
        if (std::size_t const end = numberEnd(text, from); end != from)
            return end;
        break;
    case eLineEnd:
    case eBeyondAscii:
        break;
    }
    return from + first.length;
}

std::size_t MoDiffMarkupSplitter::tokenEnd(std::string_view text, std::size_t from) const {
    if (opensTag(text, from))
        if (std::size_t const end = tagEnd(text, from); end != from)
            return end;
    return wordEnd(text, from);
}

std::size_t MoDiffMarkupSplitter::lineEnd(std::string_view text, std::size_t from) const {
    std::size_t const limit = from + kLongestLine;
    for (std::size_t at = from; at < text.size();) {
        char const byte = text[at];
        if (byte == '\n' || (byte == '>' && at + 1 < text.size() && text[at + 1] == '<') ||
            (byte == ' ' && choosesEnd(text, at, from)))
            return at + 1;
        if (at >= limit)
            return tokenEnd(text, at);
        ++at;
    }
    return text.size();
}

bool MoDiffMarkupSplitter::joins(std::string_view between) const {
    Kind const kind = kindOf(between[0]);
    return between.size() == 1 && (kind == eBlank || kind == ePunctuation);
}
