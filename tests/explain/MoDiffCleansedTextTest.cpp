#include "MoDiffCleansedText.h"
#include "MoDiffTextEncoding.h"
#include "MoTestTree.h"

#include <gtest/gtest.h>
#include <random>
#include <stdexcept>

namespace {

/// Many stretches, most of them near each other, some long or far.
TEST(HiddenStretchesTest, LeadToTheFileAndBackAtEveryByte) {
    std::mt19937 random(11);
    MoPackedRanges ranges;
    std::vector<int> owner; // by byte of the file: the stretch that hides it, or -1
    for (int stretch = 0; stretch < 1000; ++stretch) {
        owner.resize(owner.size() + (random() % 50 == 0 ? random() % 40000 : 1 + random() % 3), -1);
        std::size_t const length = 1 + (random() % 50 == 0 ? random() % 500 : random() % 2);
        ranges.append({owner.size(), length, static_cast<unsigned>(stretch % 3)});
        owner.resize(owner.size() + length, stretch);
    }
    MoDiffHiddenStretches const hidden(std::move(ranges));
    std::size_t inText = 0;
    auto next = hidden.begin();
    for (std::size_t at = 0; at < owner.size(); ++at) {
        next = next->end() <= at ? ++next : next;
        ASSERT_EQ(inText, hidden.toText(at));
        ASSERT_TRUE(next == hidden.firstBehind(at)) << at;
        ASSERT_EQ(next->begin, hidden.firstBehind(at)->begin) << at;
        ASSERT_EQ(next->begin <= at, owner[at] != -1) << at;
        if (owner[at] == -1)
            ASSERT_EQ(at, hidden.toFile(inText++));
        else
            ASSERT_EQ(static_cast<unsigned>(owner[at] % 3), next->step);
    }
    EXPECT_EQ(owner.size(), hidden.toFile(inText));
    EXPECT_EQ(owner.size() - inText, hidden.bytes());
}

TEST(CleansedTextTest, TheFileThatIsReadAgainIsTheSame) {
    MoTestTree tree;
    std::string const file = "a\r\nb\r\n";
    for (std::string const& later : {file, file + '\0' + "c", file + "c", std::string("a\r\nc\r\n")}) {
        MoDiffCleansedText text(file, MoDiffLib::Patterns());
        EXPECT_EQ("a\nb\n", text.text());
        tree.write("file", later);
        if (later.compare(0, later.find('\0'), file) == 0)
            EXPECT_EQ(file, text.takeFile("file").file());
        else
            EXPECT_THROW(text.takeFile("file"), std::runtime_error);
    }
}

TEST(TextEncodingTest, CharactersAreTheSameWhateverTheirBytes) {
    using namespace std::string_literals;
    std::string const utf8 = "\xC3\xA4\xF0\x9F\x98\x80z";
    std::string const little = "\xFF\xFE\xE4\0\x3D\xD8\0\xDEz\0"s;
    std::string const big = "\xFE\xFF\0\xE4\xD8\x3D\xDE\0\0z"s;
    EXPECT_TRUE(MoDiffTextEncoding::haveSameCharacters(little, big));
    EXPECT_TRUE(MoDiffTextEncoding::haveSameCharacters(utf8, little));
    EXPECT_FALSE(MoDiffTextEncoding::haveSameCharacters(utf8 + "z", little));
    EXPECT_TRUE(MoDiffTextEncoding::haveSameCharacters("\xFF\xFE\x3D\xD8z\0z"s, "\xEF\xBF\xBDz\xEF\xBF\xBD"));
    MoDiffTextEncoding::Beginning beginning(little, 6);
    beginning.append(std::string_view(little).substr(0, 4));
    beginning.append(std::string_view(little).substr(4));
    EXPECT_EQ(utf8.substr(0, 6), beginning.text());
    EXPECT_EQ(utf8.size(), beginning.size());
}

} // namespace
