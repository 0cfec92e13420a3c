// Deleting matches by scanning must give the bytes that ICU gives on the whole text. The other side of the comparison
// is kept apart from the library: it has its own conversion and calls ICU directly.

#include "KLTAssertError.h"
#include "MoCatalogue.h"
#include "MoCleansingMapCheck.h"
#include "MoDiffLib.h"
#include "MoDiffNormalizationPattern.h"
#include "MoDiffScanningMatcher.h"
#include "MoOracle.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

namespace {

using MoOracle::appendUtf8;
using Reference = MoOracle::Expression;

/// Compares both ways on a text in a buffer exactly as long as needed.
void compare(std::string const& regex, Reference const& reference, MoDiffNormalizationPattern const& pattern,
             std::string const& text) {
    std::optional<std::string> const expected = reference.deleteMatches(text);
    if (reference.hasTimedOut())
        return;
    std::vector<char> buffer(text.c_str(), text.c_str() + text.size() + 1);
    if (!expected) {
        EXPECT_THROW(pattern.normalizeText(buffer.data()), KLTAssertError) << regex;
        EXPECT_EQ(text, buffer.data());
        return;
    }
    pattern.normalizeText(buffer.data());
    ASSERT_EQ(*expected, buffer.data()) << regex << "\non " << testing::PrintToString(text);
    for (std::size_t i = expected->size(); i < buffer.size(); ++i)
        ASSERT_EQ('\0', buffer[i]) << regex << "\nat " << i;
    if (text.find('\r') == std::string::npos) {
        ASSERT_EQ("", faultOfCleansingMap(text, {&pattern}, *expected))
            << regex << "\non " << testing::PrintToString(text);
    }
}

/// Compares on a text the machine that has room for a few states only, where it serves the expression.
void compareWithFewStates(std::string const& regex, Reference const& reference, std::string text) {
    std::optional<MoDiffExpression> const expression = MoDiffExpression::parse(regex);
    auto const matcher = expression ? MoDiffScanningMatcher::create(*expression, 4) : nullptr;
    std::optional<std::string> const expected = reference.deleteMatches(text);
    if (!matcher || !expected)
        return;
    MoDiffTextProgress progress(text.data());
    matcher->deleteMatches(progress, text.data() + text.size(), /*isWhole=*/true);
    text.resize(static_cast<std::size_t>(progress.written - text.data()));
    ASSERT_EQ(*expected, text) << regex;
}

using Random = std::mt19937;

std::size_t below(Random& random, std::size_t bound) {
    return random() % bound;
}

template<std::size_t Count>
std::string pick(Random& random, char const* const (&choices)[Count]) {
    return choices[below(random, Count)];
}

/// A text of fragments that begin, continue and end matches, and of what may come between.
std::string makeText(Random& random, std::size_t fragments) {
    static char const* const kFragments[] = {"<script",
                                             "</script>",
                                             "</scrip",
                                             " name=\"",
                                             "name=\"chart",
                                             "name=\"next",
                                             "\"",
                                             "\" id=\"next",
                                             " id=\"",
                                             "id=\"PRMT_",
                                             "<meta name=\"Copyright\"",
                                             "<meta name=\"Trademark\"",
                                             ">",
                                             "onclick=\"",
                                             "onload=",
                                             "on",
                                             "onkeypress=\"",
                                             "<img src=",
                                             "bin/",
                                             "/bin/",
                                             "\\bind\\",
                                             "/bins/",
                                             " ctx=\"",
                                             "12:3",
                                             "chart_tmp_",
                                             "7",
                                             "c12.removeReference",
                                             "coords=\"",
                                             "<coord>",
                                             "</coord>",
                                             "n=\nam=\n\ne=3D\"ch=\nart",
                                             "name=3D\"chart",
                                             "=\n",
                                             "<x:Data>",
                                             "</x:Data>",
                                             "1.5e+03",
                                             "-2E-7",
                                             ".5",
                                             "1.",
                                             "+-.",
                                             "12e+",
                                             "e-4",
                                             "<area",
                                             "</area>",
                                             "Content-Type: image/png",
                                             "\n",
                                             "\r\n",
                                             "\r",
                                             " ",
                                             "  ",
                                             "width:",
                                             "12px;",
                                             "width:1A_;",
                                             "a",
                                             "Z_9",
                                             ".",
                                             "\xC3\xA9",
                                             "\xE2\x82\xAC",
                                             "\xF0\x9F\x98\x80",
                                             "\xE9",
                                             "\xE2\x82",
                                             "\x80",
                                             "\xC2\x85",
                                             "\xE2\x80\xA8",
                                             "\xC2\xA0",
                                             "\xCC\x81",
                                             "\xE2\x80\x8D",
                                             "\xD9\xA3",
                                             "\x01",
                                             "\t",
                                             "\v",
                                             "x",
                                             "ab",
                                             "b",
                                             "c"};
    std::string text;
    for (std::size_t i = 0; i < fragments; ++i)
        text += pick(random, kFragments);
    return text;
}

/// A text in which something comes again and again, so that matches are long, or fail late and often.
std::string makeRuns(Random& random) {
    std::string text = makeText(random, 2);
    for (std::size_t runs = below(random, 4); runs > 0; --runs) {
        std::string const unit = makeText(random, 1 + below(random, 3));
        for (std::size_t count = below(random, 80); count > 0; --count)
            text += unit;
        text += makeText(random, below(random, 3));
    }
    return text;
}

/// An expression of the whole syntax, mostly of what scanning serves.
std::string makeExpression(Random& random, int depth) {
    static char const* const kAtoms[] = {
        "a",      "b",        "c",     "x",           "<",      "\"",       "e",       "n",    "1",      " ",
        "=",      "\\.",      ".",     ".",           "\\s",    "\\d",      "\\w",     "\\W",  "\\S",    "\\n",
        "[ab]",   "[^\"]",    "[a-c]", "[0-9:]",      "[-+]",   "[^a\\s]",  "[\\d.]",  "[+-]", "[a-c-]", "\\D",
        "\\r",    "[\\r\\n]", "[^<>]", "[--]",        "[:a:]",  "[E-]h]",   "\\b",     "^",    "$",      "(?=a)",
        "(?<=b)", "(?i)",     "\\x41", "[[ab]&&[b]]", "\\p{L}", "\\Qa.\\E", "\xC3\xA9"};
    static char const* const kSuffixes[] = {"",   "",  "",   "",    "*",     "+",    "?",      "*?",
                                            "+?", "?", "??", "{2}", "{1,3}", "{1,}", "{0,2}?", "*+"};
    static char const* const kStarts[] = {"", "", "", "(?s)", "\\b", "(?s)\\b"};
    std::string expression = depth == 0 ? pick(random, kStarts) : "";
    std::size_t const count = 1 + below(random, 4);
    std::size_t const ordinary = below(random, 10) == 0 ? std::size(kAtoms) : std::size(kAtoms) - 11;
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t const kind = below(random, 12);
        if (kind == 0 && depth < 3)
            expression += (below(random, 2) ? "(" : "(?:") + makeExpression(random, depth + 1) + ")";
        else if (kind == 1 && depth < 3)
            expression += "(" + makeExpression(random, depth + 1) + "|" + makeExpression(random, depth + 1) + ")";
        else
            expression += kAtoms[below(random, ordinary)];
        expression += pick(random, kSuffixes);
    }
    if (depth == 0 && below(random, 8) == 0)
        expression += "|" + makeExpression(random, 1);
    return expression;
}

/// How much is tried; a long run sets MODIFF_DIFFERENTIAL_ROUNDS to a multiple.
int rounds(int usual) {
    char const* const factor = std::getenv("MODIFF_DIFFERENTIAL_ROUNDS");
    return factor ? usual * std::atoi(factor) : usual;
}

TEST(PatternDifferential, catalogue_deletes_what_icu_deletes_from_the_whole_text) {
    ASSERT_EQ(27U, MoCatalogue::rows().size());
    ASSERT_EQ(179U, MoCatalogue::mhtExpression().size());
    Random random(1);
    for (MoCatalogue::Row const& row : MoCatalogue::rows()) {
        EXPECT_EQ(&row.getter(), &row.getter());
        Reference const reference(row.expression);
        for (int round = 0; round < rounds(600) && !HasFatalFailure(); ++round)
            compare(row.expression, reference, row.getter(),
                    round % 2 ? makeRuns(random) : makeText(random, 1 + below(random, 60)));
    }
}

TEST(PatternDifferential, any_expression_deletes_what_icu_deletes_from_the_whole_text) {
    Random random(2);
    int wellFormed = 0;
    for (int round = 0; round < rounds(2000) && !HasFatalFailure(); ++round) {
        std::string const regex = makeExpression(random, 0);
        Reference const reference(regex);
        if (!reference.isWellFormed()) {
            EXPECT_THROW(MoDiffNormalizationPattern pattern(regex.c_str()), KLTAssertError) << regex;
            continue;
        }
        ++wellFormed;
        MoDiffNormalizationPattern const pattern(regex.c_str());
        for (int round = 0; round < 5 && !HasFatalFailure(); ++round) {
            std::string const text = round % 2 ? makeRuns(random) : makeText(random, 1 + below(random, 25));
            compare(regex, reference, pattern, text);
            compareWithFewStates(regex, reference, text);
        }
    }
    EXPECT_GT(wellFormed, rounds(2000) / 2);
}

// What is passed over unread, taken as failed without being tried, or deleted in blocks must be what ICU would find.
TEST(PatternDifferential, long_repetitions_are_read_as_icu_reads_them) {
    struct Row {
        char const* regex;
        char const* head;
        char const* unit; ///< a hundred times
        char const* tail;
    };
    static Row const kRows[] = {
        {"(?s)<s.*?</s>", "<s", "</", "s><s</s></"},
        {"(?s)<s.*?</s>", "<s\r", "\r\n<", "/s>\r"},
        {"x.*?a\\nb?.*?c", "x", "d", "a\ndc"},
        {"x.*?a\\n.*?b", "x", "c", "a\nb"},
        {"x.*?a\\sb", "x", "ca", "\nb a bx a b"},
        {"x.*?a\\sb", "x", "ca",
         "\xC2\xA0"
         "b"},
        {"x.*?a\\sb", "x", "cca",
         "\xC2\xA0"
         "b"},
        {"x.*?aab", "x", "ca", "aab"},
        {"x[abx]*?c[dx]*?f", "x", "a", "cddxacf"},
        {"(?s)(?:[\\na].?\?)+?x", "", "a", "\r\nyx"},
        {"x[0-9]+a(b|c)?d", "x", "1", "acd"},
        {"x[ab]*?y", "x", "a", "xay"},
        {"[ab]+\\W", "", "a", ""},
        {"x[ab]*?y", "\xC3\xA9x", "a", "\xC3\xA9x\xC3\xA9xy"},
        {"xa+(bcd)?", "x", "a", "bca"},
        {"\\ba.{3,5}?b", "", "a.", "!xa.a...b"},
        {"x[a-c]*", "x", "a", "c\r\nxd"},
        {"[ab]c", "a", "cac", "bc"},
        {"aa", "b", "a", "b"},
        {"aba", "", "ab", "aba"},
        {"=\n", "a", "=\n", "==\n\n"},
        {"=\n", "", "=\na=", "\n"},
        {"abcdefghijklmnopqrstuvw", "abc", "abcdefghijklmnopqrstuvw", "defghijklmnopqrstuvw"},
        {"abcdefghijklmnopqrstuvwxyz", "", "abcdefghijklmnopqrstuvwxyz_", "abcdefghijklmnopqrstuvwxy"},
    };
    for (Row const& row : kRows) {
        std::string text = row.head;
        for (int i = 0; i < 100; ++i)
            text += row.unit;
        text += row.tail;
        for (std::string const& whole : {text, text + "\n" + text}) {
            compare(row.regex, Reference(row.regex), MoDiffNormalizationPattern(row.regex), whole);
            compareWithFewStates(row.regex, Reference(row.regex), whole);
        }
    }
}

// What every match contains is looked for in windows, from the text's end on; here it lies across their border.
TEST(PatternDifferential, what_a_match_must_contain_is_found_across_windows) {
    for (char const* const regex : {"a.*?bcd", "<a.*?bcd"}) {
        for (std::size_t behind = 16382; behind <= 16386; ++behind) {
            std::string const text = "x<a." + std::string(20000, '.') + "bcd" + std::string(behind - 3, '.');
            compare(regex, Reference(regex), MoDiffNormalizationPattern(regex), text + "<a.");
            compare(regex, Reference(regex), MoDiffNormalizationPattern(regex), text);
        }
    }
    // Before that a match is looked for nearby; here it goes on beyond.
    for (std::size_t length = 500; length <= 516; ++length) {
        std::string const text = " id=\"a\"" + std::string(length, ' ') + "\xE3\x80\x80x";
        for (char const* const regex : {" id=\"[a-z]+\" *", " id=\"[a-z]+\"\\s*", " id=\"a.*?\"( *x)?"})
            compare(regex, Reference(regex), MoDiffNormalizationPattern(regex), text + text);
    }
}

// What is too deep or too large to be read here is ICU's to judge: at once, whatever its copies would come to.
TEST(PatternDifferential, expressions_without_bounds_are_left_to_icu) {
    auto const nested = [](std::size_t depth, std::string const& inside) {
        return std::string(depth, '(') + inside + std::string(depth, ')');
    };
    std::string const rows[] = {nested(50, "ab"),
                                nested(51, "ab"),
                                nested(99, "[ab]"),
                                nested(100, "ab"),
                                nested(20000, "ab"),
                                nested(20000, ""),
                                std::string(20000, '('),
                                nested(5000, "a") + ")",
                                "((((a{64}){64}){64}){64})",
                                "((((a{1,64}){1,64}){1,64}){1,64})|ab",
                                "(a{64}){4}",
                                "(a{64}){5}|ab",
                                std::string(257, 'a'),
                                std::string(256, 'a'),
                                "((a{2}){64}){64}b",
                                "(a{2}){64}b|ab"};
    for (std::string const& regex : rows) {
        Reference const reference(regex);
        if (!reference.isWellFormed()) {
            EXPECT_THROW(MoDiffNormalizationPattern pattern(regex.c_str()), KLTAssertError) << regex.substr(0, 40);
            continue;
        }
        MoDiffNormalizationPattern const pattern(regex.c_str());
        for (std::size_t const length : {2U, 256U, 300U})
            compare(regex, reference, pattern, "xab" + std::string(length, 'a') + "b");
    }
}

/// Long stretches without candidates, and matches in whose midst others stand: what is left beside a deleted one may
/// be the next pattern's.
std::string makeSparseText(Random& random) {
    static char const* const kMatches[] = {"<area x>",
                                           "<script></script>",
                                           "onclick=\"a\"",
                                           "name=\"chart1\"",
                                           "name=\"next1\" id=\"next2\"",
                                           "coords=\"1,2\"",
                                           " id=\"PRMT_1\"",
                                           " id=\"a\"",
                                           " ctx=\"1\"",
                                           "<coord></coord>",
                                           "<x:Data></x:Data>",
                                           "width:12px;",
                                           "chart_tmp_1",
                                           "c1.removeReference",
                                           "<meta name=\"Copyright\">",
                                           "<img src=bin/",
                                           "\n"};
    std::string text;
    for (std::size_t pieces = below(random, 9); pieces > 0; --pieces) {
        std::string match = pick(random, kMatches);
        for (std::size_t inserted = below(random, 4); inserted > 0; --inserted)
            match.insert(below(random, match.size() + 1), pick(random, kMatches));
        text += match + std::string(below(random, 3) ? below(random, 700) : 0, " k\xC3"[below(random, 3)]);
    }
    return text;
}

// Candidates of several patterns are listed in one pass, and the list is kept true from pattern to pattern.
TEST(PatternDifferential, a_list_of_patterns_deletes_what_they_delete_one_by_one) {
    Random random(4);
    std::vector<MoDiffNormalizationPattern const*> patterns;
    for (MoCatalogue::Row const& row : MoCatalogue::rows())
        patterns.push_back(&row.getter());
    for (int round = 0; round < rounds(4000); ++round) {
        std::shuffle(patterns.begin(), patterns.end(), random);
        MoDiffLib::Patterns const list(patterns.begin(),
                                       patterns.begin() + static_cast<std::ptrdiff_t>(5 + below(random, 20)));
        std::string const original = makeSparseText(random);
        std::string text = original;
        std::string expected = original;
        for (MoDiffNormalizationPattern const* const pattern : list)
            pattern->normalizeText(expected.data());
        std::string nothing;
        MoDiffLib::cleanse(text.data(), nothing.data(), list);
        ASSERT_EQ(expected, text) << "in round " << round << " on " << testing::PrintToString(original);
    }
}

// A large text goes through a list's patterns part by part; one that needs whole texts stands among them.
TEST(PatternDifferential, parts_of_a_large_text_are_cleansed_like_the_whole) {
    Random random(3);
    MoDiffNormalizationPattern const wordStart("\\ba");
    MoDiffNormalizationPattern const beyondAscii("[^\\w\\s<>\"=/]x?");
    MoDiffNormalizationPattern const wholeText("(?<=<)area");
    std::vector<MoDiffNormalizationPattern const*> patterns = {&wordStart, &beyondAscii};
    for (MoCatalogue::Row const& row : MoCatalogue::rows())
        patterns.push_back(&row.getter());
    for (int round = 0; round < rounds(12); ++round) {
        std::string text;
        while (text.size() < 1500000)
            text += below(random, 4) ? makeText(random, 40) : makeRuns(random);
        text += makeText(random, 1);
        text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
        std::shuffle(patterns.begin(), patterns.end(), random);
        std::size_t const count = 1 + below(random, patterns.size());
        MoDiffLib::Patterns list(patterns.begin(), patterns.begin() + static_cast<std::ptrdiff_t>(count));
        list.insert(std::next(list.begin(), static_cast<std::ptrdiff_t>(below(random, count))), &wholeText);

        std::string const original = text;
        std::string expected = text;
        for (MoDiffNormalizationPattern const* const pattern : list)
            pattern->normalizeText(expected.data());
        std::string shortText = "\rX\r";
        MoDiffLib::cleanse(text.data(), shortText.data(), list);
        ASSERT_TRUE(expected == text) << "in round " << round << ", with " << count << " patterns, from byte "
                                      << std::mismatch(text.begin(), text.end(), expected.begin()).first -
                                             text.begin();
        EXPECT_STREQ("X", shortText.c_str());
        ASSERT_EQ("", faultOfCleansingMap(original, list, expected.c_str()));
    }
}

// Where one part of a large text ends, nothing may be decided that the next one changes.
TEST(PatternDifferential, what_two_parts_of_a_large_text_share_is_decided_with_both) {
    static std::pair<char const*, std::string> const kRows[] = {{"n\\W", "n\xC3\xA9"},
                                                                {"\\babc", "\xC3\xA9"
                                                                           "abc"},
                                                                {"[-+]?[0-9]+e", "+7654321e"},
                                                                {"(?s)<s.*?</s>", "<s></</s>"},
                                                                {"=\n", "==\n\n"}};
    std::size_t const part = 131072;
    for (auto const& [regex, shared] : kRows) {
        MoDiffNormalizationPattern const pattern(regex);
        for (std::size_t offset = 0; offset <= shared.size(); ++offset) {
            std::string text;
            for (std::size_t parts = 1; parts <= 10; ++parts) {
                while (text.size() < parts * part - offset)
                    text += " 123456."[text.size() % 8];
                text += shared;
            }
            std::string expected = text;
            pattern.normalizeText(expected.data());
            std::string nothing;
            MoDiffLib::cleanse(text.data(), nothing.data(), {&pattern});
            ASSERT_STREQ(expected.c_str(), text.c_str()) << regex << " at " << offset;
        }
    }
}

// Character properties and word boundaries are decided without ICU's regular expressions; here every character of
// Unicode passes by, with a neighbour on both sides.
TEST(PatternDifferential, every_character_has_the_properties_that_icu_gives_it) {
    std::string text;
    for (UChar32 code = 1; code <= 0x10FFFF; ++code) {
        if (U_IS_SURROGATE(code))
            continue;
        std::string character;
        appendUtf8(character, code);
        text += "n" + character + "na" + character + "n";
    }
    for (char const* regex : {"\\s", "\\W", "\\d", "n.n", "\\bn", "(?s)n.n", "[^\\w]n"}) {
        Reference const reference(regex);
        compare(regex, reference, MoDiffNormalizationPattern(regex), text);
    }
}

} // namespace
