#ifndef MO_DIFF_PROGRAM_H
#define MO_DIFF_PROGRAM_H

#include "MoDiffAlphabet.h"
#include "MoDiffExpression.h"

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// An expression as a nondeterministic finite automaton (NFA) over an alphabet of its own, and what can be derived
/// from it.
class MoDiffProgram {
public:
    /// A state of the NFA, with the transitions that leave it.
    struct NfaState {
        enum Kind { eConsume, eSplit, eMatch };
        Kind kind;
        std::uint64_t classes; ///< eConsume: the classes of symbols that lead to next
        std::uint16_t next;    ///< eSplit: the preferred transition, which consumes nothing
        std::uint16_t other;   ///< eSplit: the other one
    };
    /// An expression as NFA for one direction of reading.
    struct Nfa {
        std::vector<NfaState> states;
        std::uint16_t start = 0;
    };
    /// The characters with which every match begins: one set of ASCII characters per position.
    using Prefix = std::vector<std::bitset<128>>;
    static std::size_t constexpr kLongestPrefix = 24;

    /// Returns nothing for an expression that is too large to be worth an automaton.
    static std::optional<MoDiffProgram> compile(MoDiffExpression const& expression);

    MoDiffAlphabet const& alphabet() const { return m_alphabet; }
    Nfa const& forward() const { return m_forward; }
    /// The same for a text read backwards, from a match's end to its start.
    Nfa const& backward() const { return m_backward; }
    bool startsAtWordBoundary() const { return m_startsAtWordBoundary; }

    /// At most kLongestPrefix positions; empty when nothing can be said.
    Prefix const& prefix() const { return m_prefix; }
    /// Characters that every match contains one after another somewhere behind its beginning, as far as it can be
    /// told; the most that are known, at most kLongestPrefix.
    Prefix const& required() const { return m_required; }
    /// How many of the prefix's positions, from its start, tell no characters apart, so that reading them always
    /// comes to the same state.
    std::size_t headLength() const { return m_headLength; }
    /// Whether a text that begins as prefix() says is a match already, and ends there.
    bool isPrefixWholeMatch() const { return m_isPrefixWholeMatch; }

private:
    MoDiffProgram(MoDiffExpression const& expression, MoDiffAlphabet const& alphabet);

    MoDiffAlphabet m_alphabet;
    Nfa m_forward;
    Nfa m_backward;
    bool m_startsAtWordBoundary;
    Prefix m_prefix;
    Prefix m_required;
    std::size_t m_headLength;
    bool m_isPrefixWholeMatch;
};

#endif
