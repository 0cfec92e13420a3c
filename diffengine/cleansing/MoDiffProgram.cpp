#include "MoDiffProgram.h"

#include "MoUtf8.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace {

using Node = MoDiffExpressionNode;
using Set = MoDiffCharacterSet;
using Step = MoDiffProgram::Step;
using Steps = MoDiffProgram::Steps;

std::size_t const kMostSteps = 256;
std::size_t const kMostSets = 64;

std::uint64_t bit(std::size_t index) {
    return std::uint64_t{1} << index;
}

bool contains(Node const& node, Node::Kind kind) {
    return node.kind == kind || std::any_of(node.children.begin(), node.children.end(),
                                            [kind](Node const& child) { return contains(child, kind); });
}

void collectSets(Node const& node, std::vector<Set>& sets) {
    if (node.kind == Node::eSet)
        sets.push_back(node.set);
    for (Node const& child : node.children)
        collectSets(child, sets);
}

std::vector<Set> distinctSets(MoDiffExpression const& expression) {
    std::vector<Set> all;
    collectSets(expression.root, all);
    std::vector<Set> distinct;
    for (Set const& set : all) {
        if (std::find(distinct.begin(), distinct.end(), set) == distinct.end())
            distinct.push_back(set);
    }
    return distinct;
}

/// Writes an expression's tree as steps, each node in front of what follows it.
class Writer {
public:
    enum Direction { eForward, eBackward };

    Writer(MoDiffAlphabet const& alphabet, std::vector<Set> const& sets, Direction direction)
        : m_alphabet(alphabet), m_sets(sets), m_direction(direction) {}

    Steps write(Node const& root) {
        std::uint16_t const match = add({Step::eMatch, 0, 0, 0});
        m_result.start = write(root, match);
        return std::move(m_result);
    }

private:
    std::uint16_t add(Step const& step) {
        m_result.steps.push_back(step);
        return static_cast<std::uint16_t>(m_result.steps.size() - 1);
    }

    std::uint16_t consume(std::uint64_t classes, std::uint16_t next) {
        return add({Step::eConsume, classes, next, 0});
    }

    std::uint16_t split(std::uint16_t preferred, std::uint16_t other) {
        return add({Step::eSplit, 0, preferred, other});
    }

    std::uint16_t write(Node const& node, std::uint16_t next) {
        switch (node.kind) {
        case Node::eSet:
            return consume(classesOf(node.set), next);
        case Node::eAnyAcrossLines:
            return writeCrossingDot(next);
        case Node::eSequence:
            return writeSequence(node, next);
        case Node::eChoice:
            return writeChoice(node, next);
        case Node::eOptional:
            return branch(write(node.children.front(), next), next, node.isLazy);
        case Node::eStar:
        case Node::ePlus:
            break;
        }
        return writeLoop(node, next);
    }

    std::uint64_t classesOf(Set const& set) const {
        auto const found = std::find(m_sets.begin(), m_sets.end(), set);
        return m_alphabet.classesOf(static_cast<std::size_t>(found - m_sets.begin()));
    }

    /// A carriage return and the line feed after it count as one character for this dot.
    std::uint16_t writeCrossingDot(std::uint16_t next) {
        std::uint64_t const pairStart = bit(m_alphabet.returnBeforeFeed());
        std::uint64_t const feed = bit(m_alphabet.classOfByte('\n'));
        std::uint16_t const alone = consume(m_alphabet.allClasses() & ~pairStart, next);
        std::uint16_t const pair = m_direction == eForward ? consume(pairStart, consume(feed, next))
                                                           : consume(feed, consume(pairStart, next));
        return split(alone, pair);
    }

    std::uint16_t writeSequence(Node const& node, std::uint16_t next) {
        if (m_direction == eForward) {
            for (auto child = node.children.rbegin(); child != node.children.rend(); ++child)
                next = write(*child, next);
        } else {
            for (Node const& child : node.children)
                next = write(child, next);
        }
        return next;
    }

    std::uint16_t writeChoice(Node const& node, std::uint16_t next) {
        std::uint16_t entry = write(node.children.back(), next);
        for (auto child = node.children.rbegin() + 1; child != node.children.rend(); ++child) {
            std::uint16_t const preferred = write(*child, next);
            entry = split(preferred, entry);
        }
        return entry;
    }

    std::uint16_t branch(std::uint16_t body, std::uint16_t next, bool isLazy) {
        return isLazy ? split(next, body) : split(body, next);
    }

    std::uint16_t writeLoop(Node const& node, std::uint16_t next) {
        std::uint16_t const loop = split(0, 0); // filled in when the body is known
        std::uint16_t const body = write(node.children.front(), loop);
        Step& step = m_result.steps[loop];
        step.next = node.isLazy ? next : body;
        step.other = node.isLazy ? body : next;
        return node.kind == Node::ePlus ? body : loop;
    }

    MoDiffAlphabet const& m_alphabet;
    std::vector<Set> const& m_sets;
    Direction m_direction;
    Steps m_result;
};

using Places = std::vector<std::uint16_t>;

/// Adds the consuming and matching steps that a step leads to without consuming anything.
void addReachable(Steps const& program, std::uint16_t index, Places& places) {
    Step const& step = program.steps[index];
    if (step.kind == Step::eSplit) {
        addReachable(program, step.next, places);
        addReachable(program, step.other, places);
    } else if (std::find(places.begin(), places.end(), index) == places.end()) {
        places.push_back(index);
    }
}

/// The classes that have members beyond ASCII.
std::uint64_t classesBeyondAscii(MoDiffAlphabet const& alphabet) {
    std::uint64_t ascii = 0;
    for (unsigned char character = 0; character < 128; ++character)
        ascii |= alphabet.classesOfCharacter(character);
    return alphabet.allClasses() & ~ascii;
}

struct Derivation {
    MoDiffProgram::Prefix prefix;
    bool reachesOnlyMatch; ///< whether behind the prefix nothing can follow
};

/// Follows all ways through the program at once, one character at a time, as long as every way goes on and consumes
/// nothing but ASCII: the characters met at a position are those that every match has there.
Derivation derivePrefix(MoDiffAlphabet const& alphabet, Steps const& program) {
    Derivation derivation = {{}, false};
    std::uint64_t const beyondAscii = classesBeyondAscii(alphabet);
    Places places;
    addReachable(program, program.start, places);
    while (derivation.prefix.size() < MoDiffProgram::kLongestPrefix) {
        std::uint64_t classes = 0;
        Places following;
        for (std::uint16_t const place : places) {
            Step const& step = program.steps[place];
            if (step.kind == Step::eMatch)
                return derivation;
            classes |= step.classes;
            addReachable(program, step.next, following);
        }
        if ((classes & beyondAscii) != 0)
            return derivation;
        derivation.prefix.push_back(alphabet.charactersOf(classes));
        places = std::move(following);
        derivation.reachesOnlyMatch = places.size() == 1 && program.steps[places.front()].kind == Step::eMatch;
    }
    return derivation;
}

/// Looks in an expression's tree for the longest piece of single ASCII characters, behind its beginning, that no
/// match can do without.
class PieceFinder {
public:
    MoDiffProgram::Prefix const& find(Node const& root) {
        visit(root);
        close();
        return m_longest;
    }

private:
    void visit(Node const& node) {
        bool const isRepeated = node.kind == Node::ePlus && isSingleAscii(node.children.front());
        if (node.kind == Node::eSequence) {
            for (Node const& child : node.children)
                visit(child);
        } else if (isSingleAscii(node)) {
            m_piece.push_back(node.set.ascii);
        } else if (isRepeated) {
            m_piece.push_back(node.children.front().set.ascii);
            close();
            m_piece.push_back(node.children.front().set.ascii);
        } else {
            close();
        }
    }

    static bool isSingleAscii(Node const& node) {
        return node.kind == Node::eSet && node.set.properties == 0 && !node.set.negated;
    }

    /// Ends a piece.
    void close() {
        if (m_piece.size() > MoDiffProgram::kLongestPrefix)
            m_piece.resize(MoDiffProgram::kLongestPrefix);
        if (!m_isFirst && m_piece.size() > m_longest.size())
            m_longest = m_piece;
        m_piece.clear();
        m_isFirst = false;
    }

    MoDiffProgram::Prefix m_piece;
    MoDiffProgram::Prefix m_longest;
    bool m_isFirst = true; // whether the piece is the beginning, which candidates have
};

/// Whether some characters share a class, which each of them shows by itself.
bool areAlike(MoDiffAlphabet const& alphabet, std::bitset<128> const& characters) {
    std::uint64_t classes = 0;
    for (unsigned char character = 0; character < 128; ++character)
        classes |= characters[character] ? bit(alphabet.classOfByte(character)) : 0;
    return (classes & (classes - 1)) == 0 && classes != bit(MoDiffAlphabet::kDecode);
}

std::size_t countHead(MoDiffAlphabet const& alphabet, MoDiffProgram::Prefix const& prefix) {
    auto const isOpen = [&alphabet](auto const& characters) { return !areAlike(alphabet, characters); };
    return static_cast<std::size_t>(std::find_if(prefix.begin(), prefix.end(), isOpen) - prefix.begin());
}

/// Whether an expression is single characters one after another and nothing else.
bool isPlain(Node const& node) {
    if (node.kind == Node::eSequence)
        return std::all_of(node.children.begin(), node.children.end(), isPlain);
    return node.kind == Node::eSet;
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

std::optional<MoDiffProgram> MoDiffProgram::compile(MoDiffExpression const& expression) {
    std::vector<Set> const sets = distinctSets(expression);
    if (sets.size() > kMostSets)
        return std::nullopt;
    MoDiffAlphabet const alphabet(sets, contains(expression.root, Node::eAnyAcrossLines),
                                  expression.startsAtWordBoundary);
    if (!alphabet.isComplete())
        return std::nullopt;
    MoDiffProgram program(expression, alphabet);
    // Only a start that is known to be ASCII leaves a word boundary to its immediate neighbours.
    bool const isBoundaryUnclear = program.m_startsAtWordBoundary && program.m_prefix.empty();
    if (program.m_forward.steps.size() > kMostSteps || isBoundaryUnclear)
        return std::nullopt;
    return program;
}

MoDiffProgram::MoDiffProgram(MoDiffExpression const& expression, MoDiffAlphabet const& alphabet)
    : m_alphabet(alphabet), m_startsAtWordBoundary(expression.startsAtWordBoundary) {
    std::vector<Set> const sets = distinctSets(expression);
    m_forward = Writer(m_alphabet, sets, Writer::eForward).write(expression.root);
    m_backward = Writer(m_alphabet, sets, Writer::eBackward).write(expression.root);
    Derivation derivation = derivePrefix(m_alphabet, m_forward);
    m_prefix = std::move(derivation.prefix);
    m_required = PieceFinder().find(expression.root);
    m_headLength = countHead(m_alphabet, m_prefix);
    m_isPrefixWholeMatch = derivation.reachesOnlyMatch && isPlain(expression.root);
}
