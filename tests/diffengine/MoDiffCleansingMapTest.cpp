#include "MoCleansingMapCheck.h"
#include "MoDiffNormalizationPattern.h"
#include "MoDiffNormalizationPatterns.h"

#include "KLTAssertError.h"

#include <gtest/gtest.h>

namespace {

using P = MoDiffNormalizationPatterns;

/// The file with each deleted stretch in brackets behind the number of its step.
std::string marked(std::string file, MoDiffCleansingMap const& map) {
    for (auto stretch = map.stretches().rbegin(); stretch != map.stretches().rend(); ++stretch) {
        file.insert(stretch->begin + stretch->length, "]");
        file.insert(stretch->begin, std::to_string(stretch->step) + "[");
    }
    return file;
}

TEST(MoDiffCleansingMap, tells_which_step_deleted_what_of_the_file) {
    MoDiffNormalizationPattern const b("b"), abc("a+c"), wholeText("(?<=x)[^a-z.\n]|(?<=q)d"), rest("x.*");
    MoDiffLib::Patterns const patterns = {&b, &abc, &wholeText, &rest};
    char const* const rows[] = {"0[\r]\n0[\r\r]",
                                "1[b]",
                                "2[a]1[b]2[ac]",
                                "2[a]1[bb]0[\r]2[a]0[\r]1[b]2[c]",
                                "y4[x]",
                                "0[\r]1[b]0[\r]1[b]",
                                "z\xC3\2514[x]3[\xC3\xA9]4[\xC3\xA9y]\n",
                                "\xE9q3[d]d",
                                "2[a]0[\r]2[c]1[b]4[x]1[b]3[\xC3\xA9]2[aac]0[\r]4[..]\n",
                                "2[ac]24[x]"};
    for (std::string const row : rows) {
        std::string file;
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (row[i] != ']' && (i + 1 == row.size() || row[i + 1] != '[') && row[i] != '[')
                file += row[i];
        }
        MoDiffCleansingMap const map = MoDiffCleansingMap::cleanse(file, patterns);
        EXPECT_EQ(row, marked(file, map));
        EXPECT_EQ("", faultOfCleansingMap(file, patterns, map.cleansedText())) << row;
    }
}

TEST(MoDiffCleansingMap, a_text_ends_before_its_first_nul_and_indexes_at_its_length) {
    MoDiffCleansingMap const map = MoDiffCleansingMap::cleanse(std::string("a\rb\0\r", 5), {});
    EXPECT_EQ("ab", map.cleansedText());
    EXPECT_EQ(3U, map.fileLength());
    EXPECT_EQ(3U, map.toFile(2));
    EXPECT_THROW(map.toFile(3), KLTAssertError);
    EXPECT_EQ(0U, MoDiffCleansingMap::cleanse("", {}).toFile(0));
    EXPECT_THROW(MoDiffCleansingMap::cleanse("a", {nullptr}), KLTAssertError);
}

} // namespace
