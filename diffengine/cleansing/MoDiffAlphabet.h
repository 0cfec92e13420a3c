#ifndef MO_DIFF_ALPHABET_H
#define MO_DIFF_ALPHABET_H

#include "MoDiffExpression.h"

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

/// The alphabet of an expression: classes of characters that it never tells apart, so that a table over classes
/// serves all of Unicode.
class MoDiffAlphabet {
public:
    /// Bytes of this class are not characters by themselves: text has to be decoded to find the class.
    static std::uint8_t constexpr kDecode = 0;
    static std::size_t constexpr kMostClasses = 63;

    /// One symbol of a text.
    struct Symbol {
        std::uint8_t symbolClass;
        std::uint8_t length; ///< in bytes
    };

    MoDiffAlphabet(std::vector<MoDiffCharacterSet> const& sets, bool hasCrossingDot, bool hasBoundary);

    /// False when the expression tells more classes apart than kMostClasses; it cannot be used then.
    bool isComplete() const { return m_size <= kMostClasses; }
    /// The number of classes, kDecode included.
    std::size_t size() const { return m_size; }
    /// The class of an ASCII character, or kDecode.
    std::uint8_t classOfByte(unsigned char byte) const { return m_byteClasses[byte]; }
    std::uint8_t const* byteClasses() const { return m_byteClasses.data(); }

    /// The symbol at text, which is before end.
    Symbol symbolAt(unsigned char const* text, unsigned char const* end) const;
    /// The symbol that ends at text, which is after begin.
    Symbol symbolBefore(unsigned char const* begin, unsigned char const* text, unsigned char const* end) const;

    /// The classes whose characters belong to the set with this index, as given to the constructor.
    std::uint64_t classesOf(std::size_t set) const { return m_classesOfSet[set]; }
    /// The classes in which an ASCII character can be; more than one only where its neighbour counts.
    std::uint64_t classesOfCharacter(unsigned char character) const;
    /// The ASCII characters of some classes.
    std::bitset<128> charactersOf(std::uint64_t classes) const;
    /// The class of a carriage return before a line feed, where a crossing dot takes both; else 0.
    std::uint8_t returnBeforeFeed() const { return m_returnBeforeFeed; }
    /// The classes that a byte shows by itself; characters of the others have to be decoded.
    std::uint64_t visibleClasses() const { return m_visibleClasses; }
    /// Every class but kDecode.
    std::uint64_t allClasses() const { return (std::uint64_t{1} << m_size) - 2; }

    static bool includes(std::uint64_t classes, std::uint8_t symbolClass) {
        return (classes >> symbolClass & 1) != 0;
    }
    bool isWord(std::uint8_t symbolClass) const { return includes(m_wordClasses, symbolClass); }
    bool isCombining(std::uint8_t symbolClass) const { return includes(m_combiningClasses, symbolClass); }
    /// Whether a word boundary stands before a symbol. The rule is ICU's: combining characters belong to the
    /// character before them.
    bool isBoundary(bool previousIsWord, std::uint8_t symbolClass) const {
        return !isCombining(symbolClass) && isWord(symbolClass) != previousIsWord;
    }

private:
    struct Signature;

    std::uint8_t classOf(Signature const& signature, std::map<Signature, std::uint8_t>& classes);
    std::uint8_t classOfCode(char32_t code) const;

    std::size_t m_size = 1;
    std::array<std::uint8_t, 256> m_byteClasses{};
    std::array<std::uint8_t, MoDiffCharacterSet::eAllProperties + 1> m_classesBeyondAscii{};
    std::vector<std::uint64_t> m_classesOfSet;
    unsigned m_askedProperties = 0;
    std::uint8_t m_returnBeforeFeed = 0;
    std::uint8_t m_returnAlone = 0;
    std::uint64_t m_visibleClasses = 0;
    std::uint64_t m_wordClasses = 0;
    std::uint64_t m_combiningClasses = 0;
};

#endif
