#ifndef MO_DIFF_PROGRAM_H
#define MO_DIFF_PROGRAM_H

#include "MoDiffExpression.h"

#include <array>
#include <bitset>
#include <cstdint>
#include <map>
#include <optional>
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

/// An expression as a nondeterministic automaton over an alphabet of its own, and what can be derived from it.
class MoDiffProgram {
public:
    struct Step {
        enum Kind { eConsume, eSplit, eMatch };
        Kind kind;
        std::uint64_t classes; ///< eConsume: the symbols that lead to next
        std::uint16_t next;    ///< eSplit: the preferred way
        std::uint16_t other;   ///< eSplit: the other way
    };
    /// The ways through an expression in one direction of reading.
    struct Steps {
        std::vector<Step> steps;
        std::uint16_t start = 0;
    };
    /// The characters with which every match begins: one set of ASCII characters per position.
    using Prefix = std::vector<std::bitset<128>>;
    static std::size_t constexpr kLongestPrefix = 24;

    /// Returns nothing for an expression that is too large to be worth an automaton.
    static std::optional<MoDiffProgram> compile(MoDiffExpression const& expression);

    MoDiffAlphabet const& alphabet() const { return m_alphabet; }
    Steps const& forward() const { return m_forward; }
    /// The same for a text read backwards, from a match's end to its start.
    Steps const& backward() const { return m_backward; }
    bool startsAtWordBoundary() const { return m_startsAtWordBoundary; }

    /// At most kLongestPrefix positions; empty when nothing can be said.
    Prefix const& prefix() const { return m_prefix; }
    /// Characters that every match contains one after another somewhere behind its beginning, as far as it can be
    /// told; the most that are known, at most kLongestPrefix.
    Prefix const& required() const { return m_required; }
    /// How many of the prefix's positions, from its start, tell no characters apart, so that reading them always
    /// comes to the same place.
    std::size_t headLength() const { return m_headLength; }
    /// Whether a text that begins as prefix() says is a match already, and ends there.
    bool isPrefixWholeMatch() const { return m_isPrefixWholeMatch; }

private:
    MoDiffProgram(MoDiffExpression const& expression, MoDiffAlphabet const& alphabet);

    MoDiffAlphabet m_alphabet;
    Steps m_forward;
    Steps m_backward;
    bool m_startsAtWordBoundary;
    Prefix m_prefix;
    Prefix m_required;
    std::size_t m_headLength;
    bool m_isPrefixWholeMatch;
};

#endif
