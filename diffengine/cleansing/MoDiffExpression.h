#ifndef MO_DIFF_EXPRESSION_H
#define MO_DIFF_EXPRESSION_H

#include <bitset>
#include <optional>
#include <string>
#include <vector>

/// A set of characters as an expression can name it: explicit ASCII characters and properties that also hold for
/// characters beyond ASCII.
struct MoDiffCharacterSet {
    /// Properties of characters; for those beyond ASCII they decide membership alone.
    enum Property : unsigned {
        eLineEnd = 1,
        eSpace = 2,
        eDigit = 4,
        eWord = 8,
        eCombining = 16,
        eAllProperties = 31
    };

    std::bitset<128> ascii;  ///< the members below 0x80, negation already applied
    unsigned properties = 0; ///< beyond ASCII a character is a member when it has one of these, or ...
    bool negated = false;    ///< ... when it has none of them

    bool containsBeyondAscii(unsigned propertiesOfCharacter) const {
        return ((properties & propertiesOfCharacter) != 0) != negated;
    }

    bool operator==(MoDiffCharacterSet const& other) const {
        return ascii == other.ascii && properties == other.properties && negated == other.negated;
    }

    /// The properties of a character, limited to those asked for.
    static unsigned propertiesOf(char32_t character, unsigned asked);
};

/// A node of an expression's tree.
struct MoDiffExpressionNode {
    enum Kind {
        eSet,            ///< one character of a set
        eAnyAcrossLines, ///< one character of any kind; a carriage return takes the line feed after it along
        eSequence,       ///< all children one after another
        eChoice,         ///< one of the children, earlier ones preferred
        eOptional,       ///< the child or nothing
        eStar,           ///< the child any number of times
        ePlus            ///< the child at least once
    };
    Kind kind;
    MoDiffCharacterSet set = {};
    std::vector<MoDiffExpressionNode> children = {};
    bool isLazy = false; ///< for repetitions: as few as possible

    bool isSingleCharacter() const { return kind == eSet || kind == eAnyAcrossLines; }
    bool canBeEmpty() const;
};

/// An expression read into a tree, as far as scanning can serve it.
struct MoDiffExpression {
    bool startsAtWordBoundary = false;
    MoDiffExpressionNode root;

    /// Reads an expression in ICU's syntax. Returns nothing for whatever ICU has to do itself:
    ///  - what is not well-formed, and syntax not known here (look-around, back-references, flags, nested sets, "^"
    ///  and
    ///    "$", word boundaries anywhere but at the start, characters beyond ASCII, ...);
    ///  - what can match the empty text;
    ///  - greedy repetition of groups, whose backtracking may exhaust ICU's stack, which is an error to be kept.
    /// What is returned here is certain to compile under ICU.
    static std::optional<MoDiffExpression> parse(std::string const& text);
};

#endif
