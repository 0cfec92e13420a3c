// What is derived from an expression before any text is read. A wrong prefix, piece or exit deletes too little only
// where a text happens to hold the right bytes; so the derived facts are compared themselves.

#include "MoDiffExits.h"
#include "MoDiffLiteralMatcher.h"
#include "MoDiffPersistence.h"

#include <gtest/gtest.h>

namespace {

MoDiffProgram compile(std::string const& expression) {
    return *MoDiffProgram::compile(*MoDiffExpression::parse(expression));
}

/// Single characters as they are, more of them as "[a-cx]".
template<std::size_t Size>
std::string shown(std::bitset<Size> const& characters) {
    std::string text;
    for (std::size_t first = 0; first < Size; ++first) {
        if (!characters[first])
            continue;
        std::size_t last = first;
        while (last + 1 < Size && characters[last + 1])
            ++last;
        text += static_cast<char>(first);
        if (last > first)
            text += std::string("-") + static_cast<char>(last);
        first = last;
    }
    return characters.count() == 1 ? text : "[" + text + "]";
}

std::string shown(MoDiffProgram::Prefix const& prefix) {
    std::string text;
    for (auto const& characters : prefix)
        text += shown(characters);
    return text;
}

enum Kind { eNotWhole, eWhole, eLiteral };

TEST(MoDiffProgram, derives_what_every_match_begins_with_and_contains) {
    struct Row {
        char const* expression;
        char const* prefix;
        std::size_t headLength;
        char const* required;
        Kind kind; ///< whether the prefix is a whole match, and one fixed text
    };
    Row const rows[] = {
        {"abc", "abc", 3, "", eLiteral},
        {"=\\n", "=\n", 2, "", eLiteral},
        {"aba", "aba", 3, "", eWhole}, // occurrences can overlap
        {"a{3}", "aaa", 3, "", eWhole},
        {"[ac][bd]", "[ac][bd]", 2, "", eWhole},
        {"(ab|cd)", "[ac][bd]", 0, "", eNotWhole}, // "ad" is no match
        {"(a|b)c", "[a-b]c", 0, "c", eNotWhole},
        {"a[ab]b", "a[a-b]b", 1, "", eWhole}, // "a" and "b" lead to different states
        {"ab+c", "ab[b-c]", 2, "bc", eNotWhole},
        {"ab+?", "ab", 2, "b", eNotWhole},
        {"ab*", "a", 1, "", eNotWhole},
        {"x?y", "[x-y]", 0, "y", eNotWhole},
        {"a(bc)+?d", "abc[bd]", 3, "d", eNotWhole},
        {"a.*b", "a", 1, "b", eNotWhole},
        {"a.b.cd.e", "a", 1, "cd", eNotWhole}, // the longest piece
        {"(?s)a.b", "a", 1, "b", eNotWhole},
        {"(?s)\\r.", "", 0, "", eNotWhole}, // what follows a carriage return decides about its class
        {"(?s)a\\r.", "a", 1, "", eNotWhole},
        {"\\bname", "name", 4, "", eWhole},
        {"\\w+", "", 0, "", eNotWhole},
        {"[^a]b", "", 0, "b", eNotWhole},
        {"a\\s\\sbc", "a", 1, "bc", eNotWhole},
        {"a[^b]cde|xy", "[ax]", 0, "", eNotWhole},
        {"<x:Data>.*?</x:Data>", "<x:Data>", 8, "</x:Data>", eNotWhole},
        {"[-+]?[0-9]*\\.[0-9]+", "[+--.0-9][.0-9]", 0, ".[0-9]", eNotWhole},
        {"abcdefghijklmnopqrstuvwx", "abcdefghijklmnopqrstuvwx", 24, "", eLiteral},
        {"abcdefghijklmnopqrstuvwxy", "abcdefghijklmnopqrstuvwx", 24, "", eNotWhole},
        {"a.bcdefghijklmnopqrstuvwxyz", "a", 1, "bcdefghijklmnopqrstuvwxy", eNotWhole},
    };
    for (Row const& row : rows) {
        MoDiffProgram const program = compile(row.expression);
        EXPECT_EQ(row.prefix, shown(program.prefix())) << row.expression;
        EXPECT_EQ(row.headLength, program.headLength()) << row.expression;
        EXPECT_EQ(row.required, shown(program.required())) << row.expression;
        EXPECT_EQ(row.kind != eNotWhole, program.isPrefixWholeMatch()) << row.expression;
        EXPECT_EQ(row.kind == eLiteral, MoDiffLiteralMatcher::create(program).has_value()) << row.expression;
    }
}

TEST(MoDiffProgram, leaves_to_icu_what_is_too_large_or_unclear) {
    for (std::string const expression : {"\\b\\w+", "\\b[^a]", "(\\w\\s){65}"}) {
        std::optional<MoDiffExpression> const parsed = MoDiffExpression::parse(expression);
        EXPECT_FALSE(parsed && MoDiffProgram::compile(*parsed)) << expression;
    }
    std::string options;
    for (int i = 0; i < 40; ++i)
        options += "(a?|b?)"; // the ways through double with each; its states don't
    EXPECT_EQ("[a-bx]", shown(compile(options + "x").prefix()));
}

TEST(MoDiffExits, tell_how_the_state_behind_the_head_is_left_and_whether_it_persists) {
    struct Row {
        char const* expression;
        char const* way;
        char const* loners; ///< in ASCII, NUL left out
        bool isPersistent;
    };
    Row const rows[] = {
        {"(?s)<script.*?</script>", "</script>", "\r", true},
        {"(?s)x.*?(ab|cd)y", "aby", "[\rc]", true}, // another target than that of the way
        {"(?s)x.*?aab", "a", "\r", true},           // the way's beginning might stand within it
        {"(?s)x.*?a(bc|de)", "a[bd]", "\r", true},  // the way forks
        {"(?s)x.*?abcdefghijklmnopqrstuvwyz0", "abcdefghijklmnopqrstuvwy", "\r", true},
        {"<area.*?>", "", "[\n-\r>]", true},
        {"x.*?a\\nb?.*?c", "a\n", "[\n-\r]", false},
        {"x[!-m]+", "", "[\1- n-\x7F]", true}, // the head ends within the set; what has matched can't fail
    };
    for (Row const& row : rows) {
        MoDiffProgram const program = compile(row.expression);
        MoDiffStateTable table(program, MoDiffStateTable::eForward, MoDiffStateTable::kMostStates);
        MoDiffExits exits;
        ASSERT_TRUE(exits.derive(table, table.head())) << row.expression;
        EXPECT_EQ(row.way, shown(exits.way())) << row.expression;
        std::bitset<128> loners;
        for (std::size_t byte = 1; byte < 128; ++byte)
            loners[byte] = exits.loners()[byte];
        EXPECT_EQ(row.loners, loners.any() ? shown(loners) : "") << row.expression;
        for (std::size_t byte = 128; byte < 256; ++byte)
            EXPECT_TRUE(exits.loners()[byte]); // what has to be decoded
        EXPECT_EQ(row.isPersistent, MoDiffPersistence(MoDiffStateTable::kMostStates).holds(table)) << row.expression;
    }
}

TEST(MoDiffStateTable, keeps_its_limit_and_its_unknown_column_whatever_is_derived) {
    MoDiffProgram const program = compile("(?s)x[a-c].{3}y|[ab]+?c");
    for (std::size_t const limit : {4U, 5U, 100U}) {
        MoDiffStateTable table(program, MoDiffStateTable::eForward, limit);
        MoDiffStateTable::Transition const* const transitions = table.transitions();
        MoDiffStateTable unlimited(program, MoDiffStateTable::eForward, 10000);
        MoDiffStateTable::Row row = table.start(true, false), same = unlimited.start(true, false);
        for (unsigned i = 0; i < 3000; ++i) {
            auto const symbolClass = static_cast<std::uint8_t>(1 + (i * i + i / 7) % (table.width() - 1));
            row = table.step(row, symbolClass);
            same = unlimited.step(same, symbolClass);
            ASSERT_TRUE(table.hasRoomFor(0)) << limit;
            ASSERT_EQ(transitions, table.transitions());
            ASSERT_EQ(MoDiffStateTable::kUnknown, transitions[row + MoDiffAlphabet::kDecode]);
            ASSERT_EQ(unlimited.state(same).isMatch, table.state(row).isMatch) << i;
            ASSERT_EQ(unlimited.state(same).nfaStateCount, table.state(row).nfaStateCount) << i;
            if (i % 100 == 0) { // neither of these may flush
                MoDiffExits().derive(table, row);
                table.head();
                row = table.start(true, false);
                same = unlimited.start(true, false);
                MoDiffPersistence(limit).holds(unlimited);
            }
        }
    }
}

} // namespace
