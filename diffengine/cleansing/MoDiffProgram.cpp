#include "MoDiffProgram.h"

#include <algorithm>
#include <utility>

namespace {

using Node = MoDiffExpressionNode;
using Set = MoDiffCharacterSet;
using NfaState = MoDiffProgram::NfaState;
using Nfa = MoDiffProgram::Nfa;

std::size_t const kMostStates = 256;
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

/// Writes an expression's tree as NFA, each node in front of what follows it.
class Writer {
public:
    enum Direction { eForward, eBackward };

    Writer(MoDiffAlphabet const& alphabet, std::vector<Set> const& sets, Direction direction)
        : m_alphabet(alphabet), m_sets(sets), m_direction(direction) {}

    Nfa write(Node const& root) {
        std::uint16_t const match = add({NfaState::eMatch, 0, 0, 0});
        m_result.start = write(root, match);
        return std::move(m_result);
    }

private:
    std::uint16_t add(NfaState const& state) {
        m_result.states.push_back(state);
        return static_cast<std::uint16_t>(m_result.states.size() - 1);
    }

    std::uint16_t consume(std::uint64_t classes, std::uint16_t next) {
        return add({NfaState::eConsume, classes, next, 0});
    }

    std::uint16_t split(std::uint16_t preferred, std::uint16_t other) {
        return add({NfaState::eSplit, 0, preferred, other});
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
        NfaState& state = m_result.states[loop];
        state.next = node.isLazy ? next : body;
        state.other = node.isLazy ? body : next;
        return node.kind == Node::ePlus ? body : loop;
    }

    MoDiffAlphabet const& m_alphabet;
    std::vector<Set> const& m_sets;
    Direction m_direction;
    Nfa m_result;
};

/// The consuming and matching states that other states lead to without consuming anything, each once.
class Reachable {
public:
    explicit Reachable(Nfa const& nfa) : m_nfa(&nfa), m_isSeen(nfa.states.size(), false) {}

    void add(std::uint16_t index) {
        if (m_isSeen[index])
            return;
        m_isSeen[index] = true;
        NfaState const& state = m_nfa->states[index];
        if (state.kind == NfaState::eSplit) {
            add(state.next);
            add(state.other);
        } else {
            m_states.push_back(&state);
        }
    }

    std::vector<NfaState const*> const& states() const { return m_states; }
    bool isOnlyMatch() const { return m_states.size() == 1 && m_states.front()->kind == NfaState::eMatch; }

private:
    Nfa const* m_nfa;
    std::vector<bool> m_isSeen;
    std::vector<NfaState const*> m_states;
};

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

/// Follows all ways through the NFA at once, one character at a time, as long as every way goes on and consumes
/// nothing but ASCII: the characters met at a position are those that every match has there.
Derivation derivePrefix(MoDiffAlphabet const& alphabet, Nfa const& nfa) {
    Derivation derivation = {{}, false};
    std::uint64_t const beyondAscii = classesBeyondAscii(alphabet);
    Reachable current(nfa);
    current.add(nfa.start);
    while (derivation.prefix.size() < MoDiffProgram::kLongestPrefix) {
        std::uint64_t classes = 0;
        Reachable following(nfa);
        for (NfaState const* const state : current.states()) {
            if (state->kind == NfaState::eMatch)
                return derivation;
            classes |= state->classes;
            following.add(state->next);
        }
        if ((classes & beyondAscii) != 0)
            return derivation;
        derivation.prefix.push_back(alphabet.charactersOf(classes));
        derivation.reachesOnlyMatch = following.isOnlyMatch();
        std::swap(current, following);
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

/// Whether some characters share a class.
bool areAlike(MoDiffAlphabet const& alphabet, std::bitset<128> const& characters) {
    std::uint64_t classes = 0;
    for (unsigned char character = 0; character < 128; ++character)
        classes |= characters[character] ? bit(alphabet.classOfByte(character)) : 0;
    return (classes & (classes - 1)) == 0;
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
    if (program.m_forward.states.size() > kMostStates || isBoundaryUnclear)
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
