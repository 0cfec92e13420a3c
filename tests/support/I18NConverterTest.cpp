#include "I18NConverter.h"
#include "I18NString.h"
#include "KLTAssertError.h"
#include "KLTByteBuffer.h"
#include "KLTFmDir.h"
#include "KLTUtMemory.h"
#include "MoHelper.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <langinfo.h>
#include <vector>

namespace {

char const* codeset = nullptr; // what the locale's encoding shall be; null: what it is

} // namespace

/// For the whole test program, the library included; locales with the encodings wanted are seldom installed.
extern "C" char* nl_langinfo(nl_item item) noexcept {
    static auto const original = reinterpret_cast<char* (*)(nl_item)>(dlsym(RTLD_NEXT, "nl_langinfo"));
    return item == CODESET && codeset ? const_cast<char*>(codeset) : original(item);
}

namespace {

std::u16string toUnicode(I18NConverter const& converter, std::string const& text, std::size_t capacity) {
    std::u16string units(capacity / 2, u'?'); // no unit more than promised, so that a sanitizer sees an overflow
    int const count = converter.toUnicode(units.data(), static_cast<int>(capacity), text.data(),
                                          static_cast<int>(text.size()), nullptr);
    return units.substr(0, static_cast<std::size_t>(count));
}

std::string fromUnicode(I18NConverter const& converter, std::u16string const& units, std::size_t capacity) {
    std::vector<char> bytes(capacity, '?');
    int const count = converter.fromUnicode(bytes.data(), static_cast<int>(capacity), units.c_str(), nullptr);
    EXPECT_EQ('\0', capacity ? bytes.at(static_cast<std::size_t>(count)) : '\0');
    return std::string(bytes.data(), static_cast<std::size_t>(count));
}

TEST(I18NConverter, utf8_comes_back_byte_for_byte_however_broken) {
    I18NConverter const converter("utf-8");
    // clang-format off
    std::pair<char const*, std::size_t> const textAndUnits[] = {
        {"", 0}, {"é€", 2}, {"\xF0\x9F\x98\x80", 2}, {"\xE9t\xE9", 3}, {"\x80\xFF", 2},
        {"\xC0\xAF", 2} /* overlong */, {"\xC1\xBF", 2}, {"\xE0\x9F\xBF", 3}, {"\xE0\xA0\x80", 1},
        {"\xF0\x8F\xBF\xBF", 4}, {"\xF0\x90\x80\x80", 2},
        {"\xED\xA0\x80\xED\xB0\x80", 6} /* surrogates */, {"\xED\x9F\xBF\xEE\x80\x80", 2}, {"\xF4\x8F\xBF\xBF", 2},
        {"\xF4\x90\x80\x80", 4}, {"\xE2\x82", 2} /* cut */, {"\xE2\x82x", 3}, {"\xF0\x9F\x98", 3}, {"\xC2\x80", 1}};
    // clang-format on
    for (auto const& [text, count] : textAndUnits) {
        std::u16string const units = toUnicode(converter, text, 100);
        EXPECT_EQ(count, units.size()) << text;
        EXPECT_EQ(text, fromUnicode(converter, units, std::string(text).size() + 1));
    }
}

TEST(I18NConverter, what_does_not_fit_is_cut_at_a_whole_character) {
    I18NConverter const converter("UTF-8");
    std::size_t const unitsThatFit[] = {0, 0, 1, 1, 2, 2, 2, 2, 4, 4, 5, 5}; // for 0, 1 ... bytes
    std::size_t const bytesThatFit[] = {0, 0, 1, 1, 1, 4, 4, 4, 4, 8, 9, 9};
    std::string const text = "a€\xF0\x9F\x98\x80\xFF";
    std::u16string const units = u"a€\xD83D\xDE00\xDCFF";
    for (std::size_t capacity = 0; capacity < 12; ++capacity) {
        EXPECT_EQ(units.substr(0, unitsThatFit[capacity]), toUnicode(converter, text, capacity)) << capacity;
        EXPECT_EQ(text.substr(0, bytesThatFit[capacity]), fromUnicode(converter, units, capacity)) << capacity;
    }
}

TEST(I18NConverter, other_encodings_are_converted_too_and_unknown_ones_refused) {
    I18NConverter const latin1("ISO-8859-1");
    EXPECT_EQ(u"ét", toUnicode(latin1, "\xE9t\xE9", 4));
    EXPECT_EQ("\xE9t\xE9", fromUnicode(latin1, u"été", 4));
    EXPECT_EQ("\xE9t", fromUnicode(latin1, u"été", 3));
    EXPECT_THROW(I18NConverter("no such encoding"), KLTAssertError);
    EXPECT_EQ("a\xFFé", I18NString("a\xFFé", I18NGetPlatformDefaultEncoding(), -1, nullptr, nullptr).toUtf8());
    KLTFmDir::setEffectiveWorkingDir(I18NString("/\xE9t\xE9", "ISO-8859-1", 3, nullptr, nullptr));
    EXPECT_EQ("/ét", KLTFmDir::getEffectiveWorkingDir());
}

TEST(I18NString, bytes_in_an_encoding_that_cannot_be_converted_stay_as_they_are) {
    std::pair<char const*, char const*> const rows[] = {
        {"KOI8-T", "/\xC1\xFF"}, {"ARMSCII-8", "/\xC1\xFF"},      {"GEORGIAN-PS", "/\xC1\xFF"},
        {"PT154", "/\xC1\xFF"},  {"RK1048", "/\xC1\xFF"},         {"ANSI_X3.4-1968", "/\xC1\xFF"},
        {"", "/\xC1\xFF"},       {"KOI8-R", "/\xD0\xB0\xD0\xAA"}, {"ISO-8859-1", "/\xC3\x81\xC3\xBF"}};
    for (auto const& [encoding, expected] : rows) {
        codeset = encoding;
        I18NString const text("/\xC1\xFF", I18NGetPlatformDefaultEncoding(), -1, nullptr, nullptr);
        codeset = nullptr;
        EXPECT_EQ(expected, text.toUtf8()) << encoding;
    }
}

TEST(MoHelper, xml_encoding_escapes_five_characters_and_no_other_byte) {
    KLTByteBuffer out(1, 1);
    std::string expected;
    for (int i = 0; i < 100; ++i) {
        MoHelper::xmlEncode("&<>\"'&amp; \xE9\x7F\t\0]]>", 18, out);
        MoHelper::xmlEncode(nullptr, 0, out);
        expected += std::string("&amp;&lt;&gt;&quot;&apos;&amp;amp; \xE9\x7F\t\0]]&gt;", 45);
        ASSERT_EQ(expected, std::string(out.str(), out.length()));
        ASSERT_EQ('\0', out.str()[out.length()]);
    }
}

TEST(KLTUtMemory, shows_a_leak_of_a_few_kilobytes) {
    unsigned long const before = KLTUtMemory::getMemoryConsumption(nullptr, nullptr);
    std::vector<char> leak(5000);
    unsigned long const with = KLTUtMemory::getMemoryConsumption(nullptr, nullptr);
    leak = std::vector<char>();
    EXPECT_TRUE(with >= before + 5000 && with <= before + 6000) << with - before;
    EXPECT_LE(KLTUtMemory::getMemoryConsumption(nullptr, nullptr), with - 5000);
}

} // namespace
