#include "MoDiffNearestWord.h"

#include <gtest/gtest.h>

namespace {

TEST(NearestWord, ForgivesTyposAndNothingElse) {
    struct Row {
        char const* word;
        char const* nearest;
    };
    std::vector<std::string> const words = {"html", "xhtml", "xml", "rawxml", "csv", "time-limit"};
    Row const rows[] = {{"htlm", "html"},
                        {"xhtm", "xhtml"},
                        {"HTML", "html"},
                        {"cvs", "csv"},
                        {"raxwml", "rawxml"},
                        {"timelimit", "time-limit"},
                        {"tmie-lmiit", "time-limit"},
                        {"pdf", ""},
                        {"", ""},
                        {"x", ""},
                        {"csvcsv", ""}};
    for (Row const& row : rows)
        EXPECT_EQ(row.nearest, MoDiffNearestWord::find(row.word, words)) << row.word;
    EXPECT_EQ("; did you mean csv?", MoDiffNearestWord::hint("cvs", words));
    EXPECT_EQ("; choose one of html, xhtml, xml, rawxml, csv, time-limit", MoDiffNearestWord::hint("q", words));
}

} // namespace
