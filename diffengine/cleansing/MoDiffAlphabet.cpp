#include "MoDiffAlphabet.h"

#include "MoUtf8.h"

#include <tuple>

namespace {

using Set = MoDiffCharacterSet;

std::uint64_t bit(std::size_t index) {
    return std::uint64_t{1} << index;
}

} // namespace

/// What an expression can know of a character; characters that agree in it share a class.
struct MoDiffAlphabet::Signature {
    enum Kind { eOrdinary, eFeed, eReturnBeforeFeed, eReturnAlone, eBeyondAscii };
    Kind kind;
    std::uint64_t sets; ///< the sets that it belongs to, a bit each
    bool isWord;        ///< its part in word boundaries, where they matter
    bool isCombining;

    bool operator<(Signature const& other) const {
        return std::tie(kind, sets, isWord, isCombining) <
               std::tie(other.kind, other.sets, other.isWord, other.isCombining);
    }
};

MoDiffAlphabet::MoDiffAlphabet(std::vector<MoDiffCharacterSet> const& sets, bool hasCrossingDot, bool hasBoundary)
    : m_classesOfSet(sets.size(), 0) {
    for (Set const& set : sets)
        m_askedProperties |= set.properties;
    if (hasBoundary)
        m_askedProperties |= Set::eWord | Set::eCombining;

    std::map<Signature, std::uint8_t> classes;
    auto const asciiClass = [&](unsigned char character, Signature::Kind kind) {
        std::uint64_t memberships = 0;
        for (std::size_t set = 0; set < sets.size(); ++set)
            memberships |= std::uint64_t{sets[set].ascii[character]} << set;
        unsigned const properties = hasBoundary ? Set::propertiesOf(character, m_askedProperties) : 0;
        return classOf({kind, memberships, (properties & Set::eWord) != 0, false}, classes);
    };
    for (unsigned char character = 0; character < 128; ++character) {
        bool const isSpecial = hasCrossingDot && character == '\n';
        m_byteClasses[character] = asciiClass(character, isSpecial ? Signature::eFeed : Signature::eOrdinary);
    }
    if (hasCrossingDot) {
        m_returnBeforeFeed = asciiClass('\r', Signature::eReturnBeforeFeed);
        m_returnAlone = asciiClass('\r', Signature::eReturnAlone);
        m_byteClasses['\r'] = kDecode;
    }
    for (unsigned char character = 0; character < 128; ++character)
        m_visibleClasses |= bit(m_byteClasses[character]);
    m_visibleClasses &= ~bit(kDecode);
    for (unsigned properties = 0; properties <= Set::eAllProperties; ++properties) {
        if ((properties & ~m_askedProperties) != 0)
            continue;
        std::uint64_t memberships = 0;
        for (std::size_t set = 0; set < sets.size(); ++set)
            memberships |= std::uint64_t{sets[set].containsBeyondAscii(properties)} << set;
        bool const isWord = hasBoundary && (properties & Set::eWord) != 0;
        bool const isCombining = hasBoundary && (properties & Set::eCombining) != 0;
        m_classesBeyondAscii[properties] =
            classOf({Signature::eBeyondAscii, memberships, isWord, isCombining}, classes);
    }
}

/// Finds or makes the class of a signature. Too many of them are counted, but not described.
std::uint8_t MoDiffAlphabet::classOf(Signature const& signature, std::map<Signature, std::uint8_t>& classes) {
    auto const entry = classes.emplace(signature, static_cast<std::uint8_t>(m_size));
    if (!entry.second || m_size > kMostClasses)
        return entry.first->second;
    std::uint64_t const mark = bit(m_size++);
    for (std::size_t set = 0; set < m_classesOfSet.size(); ++set) {
        if ((signature.sets >> set & 1) != 0)
            m_classesOfSet[set] |= mark;
    }
    if (signature.isWord)
        m_wordClasses |= mark;
    if (signature.isCombining)
        m_combiningClasses |= mark;
    return entry.first->second;
}

std::uint8_t MoDiffAlphabet::classOfCode(char32_t code) const {
    return m_classesBeyondAscii[m_askedProperties ? Set::propertiesOf(code, m_askedProperties) : 0];
}

std::uint64_t MoDiffAlphabet::classesOfCharacter(unsigned char character) const {
    std::uint8_t const symbolClass = m_byteClasses[character];
    return symbolClass != kDecode ? bit(symbolClass) : bit(m_returnBeforeFeed) | bit(m_returnAlone);
}

std::bitset<128> MoDiffAlphabet::charactersOf(std::uint64_t classes) const {
    std::bitset<128> characters;
    for (unsigned char character = 0; character < 128; ++character)
        characters[character] = (classes & classesOfCharacter(character)) != 0;
    return characters;
}

MoDiffAlphabet::Symbol MoDiffAlphabet::symbolAt(unsigned char const* text, unsigned char const* end) const {
    std::uint8_t const symbolClass = m_byteClasses[*text];
    if (symbolClass != kDecode)
        return {symbolClass, 1};
    if (*text == '\r')
        return {text + 1 < end && text[1] == '\n' ? m_returnBeforeFeed : m_returnAlone, 1};
    MoUtf8::Character const character = MoUtf8::decode(text, end);
    return {classOfCode(character.code), static_cast<std::uint8_t>(character.length)};
}

MoDiffAlphabet::Symbol MoDiffAlphabet::symbolBefore(unsigned char const* begin, unsigned char const* text,
                                                    unsigned char const* end) const {
    if (text[-1] < 0x80)
        return symbolAt(text - 1, end);
    MoUtf8::Character const character = MoUtf8::decodeBefore(begin, text, end);
    return {classOfCode(character.code), static_cast<std::uint8_t>(character.length)};
}
