#include "MoDiffConfigurationReader.h"
#include "MoTestTree.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <thread>

using testing::ElementsAre;
using testing::StartsWith;

namespace {

std::string errorOf(std::function<void()> const& action) {
    try {
        action();
    } catch (MoDiffConfigurationError const& error) {
        return error.what();
    }
    return "(no error)";
}

MoDiffSuiteConfiguration resolved(std::string const& toml) {
    MoTestTree::write("modiff.toml", toml);
    MoDiffSuiteConfiguration configuration = MoDiffConfigurationReader::read("modiff.toml");
    MoDiffConfigurationReader::resolve(configuration);
    return configuration;
}

struct Row {
    char const* name;
    char const* toml;
    char const* error;
};

void PrintTo(Row const& row, std::ostream* out) {
    *out << row.name;
}

template<typename Test>
std::string nameOf(testing::TestParamInfo<Test> const& info) {
    return info.param.name;
}

class BadFile : public testing::TestWithParam<Row> {};

TEST_P(BadFile, TellsPlaceReasonAndNearestWord) {
    MoTestTree const tree;
    EXPECT_THAT(errorOf([] { resolved(GetParam().toml); }),
                StartsWith(std::string("modiff.toml:") + GetParam().error));
}

INSTANTIATE_TEST_SUITE_P(
    Configuration, BadFile,
    testing::ValuesIn<std::vector<Row>>({
        {"syntax", "jobs = 1\nroots = [\"a\"", "2:13: "},
        {"unknown_key", "jobs = 1\ntime-limmit = \"1s\"",
         "2:1: there is no key time-limmit; did you mean time-limit?"},
        {"unknown_key_far_from_all", "\n  zzzzzz = 1",
         "2:3: there is no key zzzzzz; choose one of tvd, prp, expected, working-directory, roots"},
        {"number_in_quotes", "jobs = \"4\"", "1:8: jobs must be a whole number from 1 to 1024, not \"4\""},
        {"no_jobs", "jobs = 0", "1:8: jobs must be a whole number from 1 to 1024, not 0"},
        {"half_a_job", "jobs = 1.5", "1:8: jobs must be a whole number from 1 to 1024, not 1.5"},
        {"text_for_a_list", "roots = \"a\"", "1:9: roots must be a list, not \"a\""},
        {"number_in_a_list", "roots = [\"a\", 7]", "1:15: roots must be a text, not 7"},
        {"root_outside", "roots = [\"a/../../b\"]", "1:10: roots must not lead out of its directory"},
        {"absolute_root", "roots = [\"/tmp\"]", "1:10: roots must be relative, not \"/tmp\""},
        {"absolute_exclude", "exclude = [\"/tmp/**\"]", "1:12: exclude must be relative"},
        {"sub_directory_outside", "sub-directories = [\"..\"]", "1:20: sub-directories must not lead out"},
        {"duration_without_unit", "time-limit = \"60\"", "1:14: time-limit must be a duration such as \"60s\""},
        {"duration_as_number", "time-limit = 60", "1:14: time-limit must be a duration such as"},
        {"negative_duration", "time-limit = \"-5s\"", "1:14: time-limit must be a duration"},
        {"endless_duration", "time-limit = \"99999999999999999d\"", "1:14: time-limit must be a duration"},
        {"no_time", "time-limit = \"0.01ms\"",
         "1:14: time-limit must be a duration from \"100ms\" to \"30d\" or \"none\", not \"0.01ms\""},
        {"time_beyond_the_clock_of_workers", "time-limit = \"31d\"", "1:14: time-limit must be a duration from"},
        {"no_age", "max-age = \"0s\"", "1:11: max-age must be a duration of \"1s\" at least"},
        {"memory_for_nothing", "memory-limit = \"1B\"", "1:16: memory-limit must be a size of \"16MiB\" at least"},
        {"misspelt_unit", "memory-limit = \"2Gib\"",
         "1:16: memory-limit must be a size such as \"512MB\" or \"2GiB\" "
         "or \"none\" (did you mean GiB?), not \"2Gib\""},
        {"word", "new = \"warm\"", "1:7: new has no word \"warm\"; did you mean warn?"},
        {"format", "formats = [\"html\",\n \"xslx\"]", "2:2: formats has no word \"xslx\"; did you mean xlsx?"},
        {"no_format", "formats = []", "1:11: formats must name one at least"},
        {"ignored_format", "ignore = [\"pfd:text\"]", "1:11: ignore has no word \"pfd\"; did you mean pdf?"},
        {"ignored_without_kind", "ignore = [\"xlsx\"]", "1:11: ignore wants a format and a kind"},
        {"ignored_kind", "ignore = [\"xlsx:fonts\",\n \"xlsx:filtres\"]",
         "2:2: ignore: xlsx has no kind \"filtres\"; did you mean filters?"},
        {"ignored_kind_of_another_format", "ignore = [\"pdf:filters\"]",
         "1:11: ignore: pdf has no kind \"filters\"; choose one of pages, size, words"},
        {"ignored_format_without_kinds", "ignore = [\"vmd:text\"]",
         "1:11: ignore has no word \"vmd\"; choose one of xlsx, pdf"},
        {"too_many_per_cent", "hidden-warning = 101", "1:18: hidden-warning must be a number from 0 to 100, not 101"},
        {"no_per_cent", "hidden-warning = nan", "1:18: hidden-warning must be a number"},
        {"single_table", "[tvd]\ntype-name = \"a\"", "1:1: tvd must be a list of tables; begin each with [[tvd]]"},
        {"chart_without_type", "jobs = 1\n[[tvd]]", "2:1: [[tvd]] lacks the key type-name"},
        {"suffix_of_properties", "[[prp]]\ntype-name = \"a\"\nmaster-suffix = \"b\"",
         "3:1: [[prp]] has no key master-suffix"},
        {"suffix_with_wildcard", "[[tvd]]\ntype-name = \"a\"\nmaster-suffix = \"*\"",
         "3:17: master-suffix must hold"},
        {"format_without_table", "formats = [\"tvd\"]", "1:11: the format tvd needs a table [[tvd]]"},
        {"quoted_date", "[[expected]]\npair = \"a\"\nreason = \"b\"\nuntil = \"2027-01-31\"",
         "4:9: until must be a date such as 2027-01-31, without quotation marks, not \"2027-01-31\""},
        {"no_such_date", "[[expected]]\nuntil = 2027-02-30", "2:"},
        {"expected_without_reason", "[[expected]]\npair = \"a\"", "1:1: [[expected]] lacks the key reason"},
        {"not_utf8", "roots = [\"\xe9\"]", "1:"},
    }),
    nameOf<Row>);

char const kWhole[] = R"(working-directory = "server/run"
roots = ["reports/", "./a//b"]
exclude = ["reports/drafts/**"]
formats = ["xlsx", "html", "tvd", "html"]
sub-directories = ["", "en-us/"]
jobs = 4
time-limit = "1.5m"
memory-limit = "512MB"
max-age = "1d"
new = "fail"
nul = "warn"
ignore = ["xlsx:filters"]
hidden-warning = 12.5
[[tvd]]
type-name = "v5DebugTVD"
master-sub-directory = "charts"
master-suffix = "en"
[[expected]]
pair = "html:a\"b*"
reason = "TRACK-42"
until = 2027-01-31
)";

TEST(Configuration, ReadsEveryValueAndShowsItWithItsPlace) {
    MoTestTree const tree;
    MoDiffSuiteConfiguration const configuration = resolved(kWhole);
    std::string const directory = (tree.root() / "server/run/server/run").string();
    EXPECT_THAT(configuration.describe(),
                ElementsAre("working-directory = \"" + directory + "\"  # modiff.toml:1:21",
                            "roots = [\"reports\", \"a/b\"]  # modiff.toml:2:9",
                            "exclude = [\"reports/drafts/**\"]  # modiff.toml:3:11",
                            "formats = [\"html\", \"tvd\", \"xlsx\"]  # modiff.toml:4:11",
                            "sub-directories = [\"\", \"en-us\"]  # modiff.toml:5:19", "jobs = 4  # modiff.toml:6:8",
                            "time-limit = \"90s\"  # modiff.toml:7:14",
                            "memory-limit = \"500000KiB\"  # modiff.toml:8:16",
                            "max-age = \"1d\"  # modiff.toml:9:11", "new = \"fail\"  # modiff.toml:10:7",
                            "nul = \"warn\"  # modiff.toml:11:7", "ignore = [\"xlsx:filters\"]  # modiff.toml:12:10",
                            "hidden-warning = 12.5  # modiff.toml:13:18", "[[tvd]]  # modiff.toml:14:1",
                            "type-name = \"v5DebugTVD\"", "master-sub-directory = \"charts\"",
                            "master-suffix = \"en\"", "[[expected]]  # modiff.toml:18:1", "pair = \"html:a\\\"b*\"",
                            "reason = \"TRACK-42\"", "until = 2027-01-31"));
    EXPECT_EQ(std::chrono::seconds(90), configuration.timeLimit);
    EXPECT_EQ(512000000U, configuration.memoryLimit);
    EXPECT_EQ(std::chrono::hours(24), configuration.maxAge);
}

TEST(Configuration, WhatIsShownReadsTheSame) {
    MoTestTree const tree;
    std::string shown;
    for (std::string const& line : resolved(kWhole).describe())
        shown += line + "\n";
    EXPECT_EQ(resolved(kWhole).toJson(), resolved(shown).toJson());
}

TEST(Configuration, ComesToDefaultsWithoutAFile) {
    MoTestTree const tree;
    MoDiffSuiteConfiguration configuration = MoDiffConfigurationReader::read("");
    MoDiffConfigurationReader::resolve(configuration);
    EXPECT_EQ((tree.root() / "server/run").string(), configuration.workingDirectory);
    EXPECT_EQ(16U, configuration.formats.size()) << "all but tvd and prp";
    EXPECT_EQ(std::max(1U, std::thread::hardware_concurrency()), configuration.jobs);
    nlohmann::json const json = nlohmann::json::parse(configuration.toJson());
    EXPECT_TRUE(json.at("sub-directories").is_null());
    EXPECT_EQ("none", json.at("max-age"));
    EXPECT_THAT(configuration.describe(), testing::Contains("# sub-directories: those that are found  # default"));
}

TEST(Configuration, IsFoundHereOrAbove) {
    MoTestTree const tree;
    std::string const file = (tree.root() / "server/modiff.toml").string();
    EXPECT_EQ("", MoDiffConfigurationReader::find("."));
    MoTestTree::write(file, "");
    EXPECT_EQ(file, MoDiffConfigurationReader::find("."));
    EXPECT_EQ((tree.root() / "server").string(), MoDiffConfigurationReader::read(file).workingDirectory);
    MoTestTree::write("modiff.toml", "");
    EXPECT_EQ((tree.root() / "server/run/modiff.toml").string(), MoDiffConfigurationReader::find("."));
}

TEST(Configuration, NamesAFileThatCannotBeRead) {
    MoTestTree const tree;
    std::filesystem::create_directory("folder");
    EXPECT_THAT(errorOf([] { MoDiffConfigurationReader::read("none.toml"); }),
                StartsWith("none.toml: cannot be read"));
    EXPECT_THAT(errorOf([] { MoDiffConfigurationReader::read("folder"); }),
                StartsWith("folder: cannot be read: Is a directory"));
}

TEST(Configuration, OptionsWinOverTheFile) {
    MoTestTree const tree;
    MoDiffSuiteConfiguration configuration = resolved("jobs = 4\nmax-age = \"1d\"\nroots = [\"a\"]");
    auto const set = [&configuration](char const* key, std::vector<std::string> const& values) {
        MoDiffConfigurationReader::setOption(configuration, key, values, "--option");
    };
    set("jobs", {"3", "2"});
    set("max-age", {"none"});
    set("roots", {"b", "c"});
    set("hidden-warning", {"7.5"});
    EXPECT_EQ(2U, configuration.jobs);
    EXPECT_FALSE(configuration.maxAge);
    EXPECT_THAT(configuration.roots, ElementsAre("b", "c"));
    EXPECT_EQ(7.5, configuration.hiddenWarning);
    EXPECT_EQ("--option", configuration.origins.at("jobs"));
    EXPECT_EQ("--option: jobs must be a whole number from 1 to 1024, not \"2x\"",
              errorOf([&set] { set("jobs", {"2x"}); }));
    EXPECT_EQ("--option: nul has no word \"eror\"; did you mean error?", errorOf([&set] { set("nul", {"eror"}); }));
}

} // namespace
