#include "MoDiffExpression.h"

#include <algorithm>
#include <cstring>
#include <unicode/uchar.h>

namespace {

using Node = MoDiffExpressionNode;
using Set = MoDiffCharacterSet;

/// Leaves the parser at the first thing that ICU has to see itself; never leaves this module.
struct Unsupported {};

// Counted repetition is written out, so its size is bounded.
std::size_t const kMostCopies = 64;

// What has more characters, copies included, is too large for a MoDiffProgram anyway.
std::size_t const kMostCharacters = 256;

// The tree is walked recursively. ICU refuses 99 groups within one another; which ones exactly is its own affair.
unsigned const kDeepestGroup = 50;

bool hasProperty(unsigned asked, Set::Property property) {
    return (asked & property) != 0;
}

bool isLineEnd(char32_t character) {
    return (character >= 0x0A && character <= 0x0D) || character == 0x85 || character == 0x2028 ||
           character == 0x2029;
}

bool isWord(UChar32 character) {
    auto const kConnectors = U_GC_PC_MASK | U_GC_ND_MASK | U_GC_M_MASK;
    return u_isUAlphabetic(character) || (U_GET_GC_MASK(character) & kConnectors) != 0 || character == 0x200C ||
           character == 0x200D;
}

bool isCombining(UChar32 character) {
    return u_hasBinaryProperty(character, UCHAR_GRAPHEME_EXTEND) || u_charType(character) == U_FORMAT_CHAR;
}

Set setOf(char character) {
    Set set;
    set.ascii.set(static_cast<unsigned char>(character));
    return set;
}

/// All characters with a property, or all without it.
Set setOf(Set::Property property, bool negated) {
    Set set;
    set.properties = property;
    set.negated = negated;
    for (char32_t character = 0; character < 0x80; ++character)
        set.ascii[character] = (Set::propertiesOf(character, property) != 0) != negated;
    return set;
}

Node single(Set const& set) {
    return Node{Node::eSet, set};
}

bool isAsciiPunctuation(char character) {
    return character > ' ' && character < 0x7F && !std::isalnum(static_cast<unsigned char>(character));
}

/// A recursive-descent parser; every function reads what it is named after and leaves the position behind it.
class Parser {
public:
    explicit Parser(std::string const& text) : m_text(text) {}

    MoDiffExpression parse() {
        m_dotCrossesLines = skip("(?s)");
        MoDiffExpression expression;
        expression.startsAtWordBoundary = skip("\\b");
        // A boundary before alternatives would belong to the first of them alone.
        expression.root = expression.startsAtWordBoundary ? sequence() : choice();
        if (!atEnd())
            throw Unsupported();
        return expression;
    }

private:
    bool atEnd() const { return m_position == m_text.size(); }
    char peek() const { return atEnd() ? '\0' : m_text[m_position]; }
    bool peekIs(char const* characters) const { return !atEnd() && std::strchr(characters, peek()); }

    char take() {
        if (atEnd() || static_cast<unsigned char>(peek()) >= 0x80)
            throw Unsupported();
        return m_text[m_position++];
    }

    bool skip(char const* token) {
        std::size_t const length = std::strlen(token);
        if (m_text.compare(m_position, length, token) != 0)
            return false;
        m_position += length;
        return true;
    }

    Node choice() {
        Node node{Node::eChoice};
        do
            node.children.push_back(sequence());
        while (skip("|"));
        return node.children.size() == 1 ? std::move(node.children.front()) : node;
    }

    Node sequence() {
        Node node{Node::eSequence};
        while (!atEnd() && !peekIs("|)"))
            node.children.push_back(repetition());
        if (node.children.empty())
            throw Unsupported();
        return node;
    }

    Node repetition() {
        std::size_t const charactersBefore = m_characters;
        Node operand = atom();
        if (skip("*"))
            return unbounded(Node::eStar, std::move(operand));
        if (skip("+"))
            return unbounded(Node::ePlus, std::move(operand));
        if (skip("?"))
            return wrap(Node::eOptional, std::move(operand), laziness());
        if (skip("{"))
            return counted(operand, m_characters - charactersBefore);
        return operand;
    }

    static Node wrap(Node::Kind kind, Node operand, bool isLazy) {
        Node node{kind};
        node.isLazy = isLazy;
        node.children.push_back(std::move(operand));
        return node;
    }

    /// Reads what may follow a quantifier. A possessive one or a second one is ICU's.
    bool laziness() {
        bool const isLazy = skip("?");
        if (peekIs("*+?{"))
            throw Unsupported();
        return isLazy;
    }

    Node unbounded(Node::Kind kind, Node operand) {
        bool const isLazy = laziness();
        if (operand.canBeEmpty() || (!operand.isSingleCharacter() && !(isLazy && isPlainSequence(operand))))
            throw Unsupported();
        return wrap(kind, std::move(operand), isLazy);
    }

    /// Whether every step of a group is a single character, repeated or not, so that it leaves few alternatives for
    /// backtracking.
    static bool isPlainSequence(Node const& node) {
        return node.kind == Node::eSequence &&
               std::all_of(node.children.begin(), node.children.end(), [](Node const& child) {
                   bool const isRepeated = child.kind == Node::eStar || child.kind == Node::ePlus;
                   return child.isSingleCharacter() || (isRepeated && child.children.front().isSingleCharacter());
               });
    }

    /// Writes "x{2,4}" out as "xx(x(x)?)?"; the opening brace is read already.
    Node counted(Node const& operand, std::size_t characters) {
        std::size_t const least = number();
        std::size_t const most = skip(",") ? number() : least;
        if (!skip("}") || most < least || most == 0 || most > kMostCopies || operand.canBeEmpty())
            throw Unsupported();
        countCharacters((most - 1) * characters);
        bool const isLazy = laziness();
        Node result{Node::eSequence};
        result.children.assign(least, operand);
        if (most > least) {
            Node tail = wrap(Node::eOptional, operand, isLazy);
            for (std::size_t copies = least + 1; copies < most; ++copies) {
                Node longer{Node::eSequence};
                longer.children = {operand, std::move(tail)};
                tail = wrap(Node::eOptional, std::move(longer), isLazy);
            }
            result.children.push_back(std::move(tail));
        }
        return result;
    }

    std::size_t number() {
        std::size_t value = 0;
        if (!peekIs("0123456789"))
            throw Unsupported();
        while (peekIs("0123456789"))
            value = std::min<std::size_t>(value * 10 + static_cast<std::size_t>(take() - '0'), kMostCopies + 1);
        return value;
    }

    void countCharacters(std::size_t characters) {
        m_characters += characters;
        if (m_characters > kMostCharacters)
            throw Unsupported();
    }

    Node atom() {
        if (skip("("))
            return group();
        countCharacters(1);
        if (skip("["))
            return single(bracketSet());
        if (skip("."))
            return m_dotCrossesLines ? Node{Node::eAnyAcrossLines} : single(setOf(Set::eLineEnd, true));
        if (skip("\\"))
            return single(escape());
        if (peekIs("*+?{}]^$"))
            throw Unsupported();
        return single(setOf(take()));
    }

    Node group() {
        if ((peek() == '?' && !skip("?:")) || m_depth == kDeepestGroup)
            throw Unsupported();
        ++m_depth;
        Node node = choice();
        if (!skip(")"))
            throw Unsupported();
        --m_depth;
        return node;
    }

    /// What stands behind a backslash.
    Set escape() {
        char const character = take();
        switch (character) {
        case 'n':
            return setOf('\n');
        case 'r':
            return setOf('\r');
        case 't':
            return setOf('\t');
        case 'f':
            return setOf('\f');
        case 's':
        case 'S':
            return setOf(Set::eSpace, character == 'S');
        case 'd':
        case 'D':
            return setOf(Set::eDigit, character == 'D');
        case 'w':
        case 'W':
            return setOf(Set::eWord, character == 'W');
        default:
            if (!isAsciiPunctuation(character))
                throw Unsupported();
            return setOf(character);
        }
    }

    /// A set in brackets; the opening one is read already.
    Set bracketSet() {
        if (peek() == ':') // a named class
            throw Unsupported();
        bool const isNegated = skip("^");
        Set set;
        if (skip("-")) {
            set.ascii.set('-');
            if (peek() == '-') // a difference of sets
                throw Unsupported();
        }
        while (!skip("]")) {
            Set const member = setMember();
            if (member.negated)
                throw Unsupported();
            set.ascii |= member.ascii;
            set.properties |= member.properties;
            if (peek() == '-' && !isDashAtEnd())
                rangeFrom(member, set);
        }
        if (set.ascii.none())
            throw Unsupported();
        set.negated = isNegated;
        if (isNegated)
            set.ascii.flip();
        return set;
    }

    Set setMember() {
        if (skip("\\"))
            return escape();
        if (peekIs("[&-") && !isDashAtEnd())
            throw Unsupported();
        return setOf(take());
    }

    bool isDashAtEnd() const { return m_text.compare(m_position, 2, "-]") == 0; }

    /// Adds the range that starts with a member; the position is at its dash.
    void rangeFrom(Set const& first, Set& set) {
        take();
        if (peek() == '-') // a difference of sets
            throw Unsupported();
        Set const last = setMember();
        if (first.ascii.count() != 1 || last.ascii.count() != 1 || peek() == '-')
            throw Unsupported();
        std::size_t const low = onlyMember(first);
        std::size_t const high = onlyMember(last);
        if (low > high)
            throw Unsupported();
        for (std::size_t character = low; character <= high; ++character)
            set.ascii.set(character);
    }

    static std::size_t onlyMember(Set const& set) {
        std::size_t character = 0;
        while (!set.ascii[character])
            ++character;
        return character;
    }

    std::string const& m_text;
    std::size_t m_position = 0;
    std::size_t m_characters = 0; ///< of the tree so far
    unsigned m_depth = 0;         ///< groups that are open
    bool m_dotCrossesLines = false;
};

} // namespace

unsigned MoDiffCharacterSet::propertiesOf(char32_t character, unsigned asked) {
    auto const code = static_cast<UChar32>(character);
    unsigned properties = 0;
    if (hasProperty(asked, eLineEnd) && isLineEnd(character))
        properties |= eLineEnd;
    if (hasProperty(asked, eSpace) && u_isUWhiteSpace(code))
        properties |= eSpace;
    if (hasProperty(asked, eDigit) && u_charType(code) == U_DECIMAL_DIGIT_NUMBER)
        properties |= eDigit;
    if (hasProperty(asked, eWord) && isWord(code))
        properties |= eWord;
    if (hasProperty(asked, eCombining) && isCombining(code))
        properties |= eCombining;
    return properties;
}

bool MoDiffExpressionNode::canBeEmpty() const {
    auto const isEmpty = [](MoDiffExpressionNode const& node) { return node.canBeEmpty(); };
    switch (kind) {
    case eSet:
    case eAnyAcrossLines:
        return false;
    case eSequence:
        return std::all_of(children.begin(), children.end(), isEmpty);
    case eChoice:
        return std::any_of(children.begin(), children.end(), isEmpty);
    case ePlus:
        return children.front().canBeEmpty();
    case eOptional:
    case eStar:
        break;
    }
    return true;
}

std::optional<MoDiffExpression> MoDiffExpression::parse(std::string const& text) {
    try {
        MoDiffExpression expression = Parser(text).parse();
        if (!expression.root.canBeEmpty())
            return expression;
    } catch (Unsupported const&) {
        return std::nullopt;
    }
    return std::nullopt;
}
