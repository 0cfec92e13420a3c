#ifndef MO_DIFF_GTEST_LISTENER_H
#define MO_DIFF_GTEST_LISTENER_H

#include "MoDiffListener.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <string_view>

/// Makes each result an expectation of GoogleTest: what did not pass is a failure that does not end the test, with
/// both names, the place and what stands there on both sides in its message. Make one in the test, register it with
/// registry or engine, and expect that getResultCount() is not 0, since a report without a master has no result.
///
/// Belongs to the program that includes it, which needs GoogleTest; the library itself does not. Used from one thread
/// at a time, like all listeners. What it says is UTF-8 without control characters, whatever files and names hold.
class MoDiffGTestListener : public MoDiffListener {
public:
    /// @param file the source file that failures are said to be in, by default the one that makes the listener; kept
    /// @param line likewise its line
    explicit MoDiffGTestListener(char const* file = __builtin_FILE(), int line = __builtin_LINE())
        : m_file(file), m_line(line) {}

    using MoDiffListener::comparisonNotification;
    void comparisonNotification(MoDiffResult const& result) override {
        ++m_results;
        if (!result.isPassed())
            fail(result, "did not pass");
    }
    void comparisonNotification(MoDiffResultFailFileMissing const& result) override {
        ++m_results;
        bool const isMaster = result.getMissingFile() == result.getMasterName();
        fail(result, isMaster ? "the master is missing or cannot be opened"
                              : "the actual file is missing or cannot be opened");
    }
    /// The files are read once more to find the place, as their engine tells none.
    void comparisonNotification(MoDiffResultFailDiff const& result) override {
        ++m_results;
        fail(result, describe(contentOf(result.getMasterName()), contentOf(result.getActualName())));
    }
    void comparisonNotification(MoDiffResultFailDiffNormalized const& result) override {
        ++m_results;
        std::string_view const master = textOf(result.getNormalizedMaster());
        std::string_view const actual = textOf(result.getNormalizedActual());
        auto const place = static_cast<std::size_t>(std::max(result.getDiffPosition(), 0L));
        fail(result, "different at byte " + std::to_string(place) + " of the normalized texts" +
                         excerpts(master, actual, place));
    }

    /// How many pairs were compared.
    std::size_t getResultCount() const { return m_results; }
    /// How many of them did not pass.
    std::size_t getFailureCount() const { return m_failures; }

private:
    static constexpr std::size_t kBytesBefore = 40;
    static constexpr std::size_t kBytesBehind = 60;

    /// A stretch of code points.
    struct Range {
        unsigned first;
        unsigned last;
    };

    void fail(MoDiffResult const& result, std::string const& what) {
        ++m_failures;
        ADD_FAILURE_AT(m_file, m_line) << shown(result.getMasterName()) << " and " << shown(result.getActualName())
                                       << ": " << what;
    }

    static std::string_view textOf(char const* text) { return text ? text : ""; }

    static std::string contentOf(std::string const& name) {
        std::ifstream file(name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    static std::string withoutReturns(std::string text) {
        text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
        return text;
    }

    /// Most engines take no notice of carriage returns.
    static std::string describe(std::string master, std::string actual) {
        std::string const words = "different";
        if (master == actual)
            return words;
        std::string const shortMaster = withoutReturns(master);
        std::string const shortActual = withoutReturns(actual);
        if (shortMaster != shortActual) {
            master = shortMaster;
            actual = shortActual;
        }
        auto const parted = std::mismatch(master.begin(), master.end(), actual.begin(), actual.end()).first;
        auto const line = 1 + std::count(master.begin(), parted, '\n');
        auto const place = static_cast<std::size_t>(parted - master.begin());
        return words + ", first in line " + std::to_string(line) + excerpts(master, actual, place);
    }

    /// Lines with what stands around a place, which is marked.
    static std::string excerpts(std::string_view master, std::string_view actual, std::size_t place) {
        place = std::min({place, master.size(), actual.size()});
        place = std::min(characterBegin(master, place), characterBegin(actual, place));
        std::string const before = excerpt(master, place - std::min(place, kBytesBefore), place);
        auto const isCharacter = [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0U) != 0x80; };
        auto const columns = static_cast<std::size_t>(std::count_if(before.begin(), before.end(), isCharacter));
        return "\n  master  " + before + excerpt(master, place, place + kBytesBehind) + "\n  actual  " + before +
               excerpt(actual, place, place + kBytesBehind) + "\n" + std::string(columns + 10, ' ') + "^";
    }

    static std::string excerpt(std::string_view text, std::size_t begin, std::size_t end) {
        begin = characterBegin(text, begin);
        return shown(text.substr(begin, characterBegin(text, std::min(end, text.size())) - begin));
    }

    /// Where the character begins that holds a byte; the byte itself where there is none.
    static std::size_t characterBegin(std::string_view text, std::size_t at) {
        for (std::size_t begin = at; begin + 4 > at; --begin) {
            if (!isContinuation(text, begin))
                return begin;
            if (begin == 0)
                break;
        }
        return at;
    }

    static bool isContinuation(std::string_view text, std::size_t at) {
        return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xc0U) == 0x80;
    }

    /// The text with everything escaped that a terminal or the writer of a test report might obey, hide or refuse.
    static std::string shown(std::string_view text) {
        std::string result;
        for (std::size_t at = 0; at < text.size();) {
            std::size_t const length = characterAt(text, at);
            result += length == 0 ? escapeOf(text[at]) : std::string(text.substr(at, length));
            at += std::max<std::size_t>(length, 1);
        }
        return result;
    }

    static std::string escapeOf(char byte) {
        switch (byte) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        case '\\':
            return "\\\\";
        default:
            char escape[5];
            std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
            return escape;
        }
    }

    /// How many bytes the character has that may be shown; 0 when its first byte is to be escaped.
    static std::size_t characterAt(std::string_view text, std::size_t at) {
        auto const first = static_cast<unsigned char>(text[at]);
        if (first < 0x80)
            return first >= 0x20 && first != 0x7f && first != '\\' ? 1 : 0;
        std::size_t const length = first < 0xc2 ? 0 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : first < 0xf5 ? 4 : 0;
        if (length == 0 || at + length > text.size())
            return 0;
        unsigned code = first & (0xffU >> (length + 1));
        for (std::size_t index = 1; index < length; ++index) {
            if (!isContinuation(text, at + index))
                return 0;
            code = code << 6 | (static_cast<unsigned char>(text[at + index]) & 0x3fU);
        }
        return isShown(code, length) ? length : 0;
    }

    static bool isShown(unsigned code, std::size_t length) {
        static constexpr unsigned kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
        // Controls, what is invisible or turns the direction of writing, surrogates, what is no character.
        static constexpr Range kHidden[] = {{0x80, 0xa0},      {0xad, 0xad},     {0x61c, 0x61c},   {0x180e, 0x180e},
                                            {0x2000, 0x200f},  {0x2028, 0x202f}, {0x205f, 0x206f}, {0xd800, 0xdfff},
                                            {0xfe00, 0xfe0f},  {0xfeff, 0xfeff}, {0xfff0, 0xfffb}, {0xfffe, 0xffff},
                                            {0xe0000, 0xe0fff}};
        return code >= kLeast[length] && code <= 0x10ffff &&
               std::none_of(std::begin(kHidden), std::end(kHidden),
                            [code](Range range) { return code >= range.first && code <= range.last; });
    }

    char const* m_file;
    int m_line;
    std::size_t m_results = 0;
    std::size_t m_failures = 0;
};

#endif
