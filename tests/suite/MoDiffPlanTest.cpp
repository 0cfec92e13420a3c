#include "MoDiffPlan.h"
#include "MoDiffConfigurationReader.h"
#include "MoDiffDiscovery.h"
#include "MoDiffExpectations.h"
#include "MoDiffNewFiles.h"
#include "MoTestTree.h"

#include <algorithm>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Texts = std::vector<std::string>;

MoDiffSuiteConfiguration configured(std::string const& toml = "") {
    MoTestTree::write("modiff.toml", toml);
    MoDiffSuiteConfiguration configuration = MoDiffConfigurationReader::read("modiff.toml");
    MoDiffConfigurationReader::resolve(configuration);
    return configuration;
}

/// Each pair as "id actual", the common beginning of the actual files left out.
Texts pairsOf(MoDiffPlan const& plan) {
    Texts pairs;
    for (MoDiffPair const& pair : plan.pairs)
        pairs.push_back(pair.id + " " + pair.actual.substr(std::string("../webcontent/").size()));
    return pairs;
}

Texts found(std::string const& toml = "") {
    return pairsOf(MoDiffPlan::make(configured(toml)));
}

/// Makes empty files; a name that begins with "@" is a link "@name>target" seen from its own directory.
void make(std::string const& names) {
    std::istringstream stream(names);
    for (std::string name; stream >> name;) {
        std::size_t const target = name.find('>');
        if (name[0] != '@') {
            MoTestTree::write(name, "");
        } else {
            fs::path const link = name.substr(1, target - 1);
            if (link.has_parent_path())
                fs::create_directories(link.parent_path());
            fs::create_symlink(name.substr(target + 1), link);
        }
    }
}

struct Row {
    char const* name;
    char const* files;
    char const* toml;
    Texts pairs;
};

void PrintTo(Row const& row, std::ostream* out) {
    *out << row.name;
}

class Tree : public testing::TestWithParam<Row> {};

TEST_P(Tree, HoldsThesePairs) {
    MoTestTree const tree;
    make(GetParam().files);
    EXPECT_EQ(GetParam().pairs, found(GetParam().toml));
}

char const kChartTables[] = R"([[tvd]]
type-name = "T"
master-sub-directory = "charts"
master-suffix = "en"
[[tvd]]
type-name = "T2"
master-sub-directory = "charts/deep"
[[prp]]
type-name = "P"
)";

INSTANTIATE_TEST_SUITE_P(
    Plan, Tree,
    testing::ValuesIn<std::vector<Row>>({
        {"every_format",
         "Masters/a.html Masters/a.mht Masters/a.xml Masters/XML/a.xml Masters/DataXML/a.xml "
         "Masters/PagedDataXML/a.xml Masters/RawXML/a.xml Masters/a.nao Masters/XLS/a.html Masters/XLWA/a.mht "
         "Masters/singleXLS/a.html Masters/CSV/a.csv Masters/a.csi Masters/XLS2007/a.xlsx Masters/PDF/a.pdf "
         "Masters/vmd/a.vmd",
         "",
         {"csi:Masters/a.csi v5DebugROM/a.csi", "csv:Masters/CSV/a.csv v5DebugCSV/a.csv",
          "dataxml:Masters/DataXML/a.xml v5DebugDataXml/a.xml", "html:Masters/a.html v5DebugHTML/a.html",
          "mht:Masters/a.mht v5DebugMHT/a.mht", "nao:Masters/a.nao v5DebugNAO/a.nao",
          "pageddataxml:Masters/PagedDataXML/a.xml v5DebugPagedDataXml/a.xml",
          "pdf:Masters/PDF/a.pdf v5DebugPDF/a.pdf", "rawxml:Masters/RawXML/a.xml v5DebugRawXml/a.xml",
          "singlexls:Masters/singleXLS/a.html v5DebugSingleXLS/a.html", "vmd:Masters/vmd/a.vmd v5DebugVMD/a.vmd",
          "xhtml:Masters/a.xml v5DebugXHTML/a.xml", "xls:Masters/XLS/a.html v5DebugXLS/a.html",
          "xlsx:Masters/XLS2007/a.xlsx v5DebugXLS2007/a.xlsx", "xlwa:Masters/XLWA/a.mht v5DebugXLWA/a.mht",
          "xml:Masters/XML/a.xml v5DebugXML/a.xml"}},
        {"charts_and_properties",
         "Masters/charts/a_en.tvd Masters/charts/a_de.tvd Masters/charts/deep/a.tvd Masters/de/charts/b_en.tvd "
         "Masters/a.prp Masters/charts/a.html",
         kChartTables,
         {"prp:Masters/a.prp P/a.prp", "tvd:Masters/charts/a_en.tvd T/a_en.tvd",
          "tvd:Masters/charts/deep/a.tvd T2/a.tvd", "tvd:Masters/de/charts/b_en.tvd T/de/b_en.tvd"}},
        {"sub_directories_at_any_depth",
         "r/Masters/en/a.html r/Masters/en/XML/a.xml r/Masters/en/us/a.html r/Masters/XML/en/a.xml "
         "r/Masters/en/a.txt",
         "",
         {"html:r/Masters/en/a.html v5DebugHTML/en/a.html", "html:r/Masters/en/us/a.html v5DebugHTML/en/us/a.html",
          "xml:r/Masters/en/XML/a.xml v5DebugXML/en/a.xml"}},
        {"named_sub_directories",
         "Masters/a.html Masters/en/a.html Masters/de/a.html Masters/de/CSV/a.csv",
         "sub-directories = [\"de\"]",
         {"csv:Masters/de/CSV/a.csv v5DebugCSV/de/a.csv", "html:Masters/de/a.html v5DebugHTML/de/a.html"}},
        {"overlapping_roots",
         "a/Masters/x.html a/b/Masters/y.html c/Masters/z.html a/Masters/en/v.html",
         "roots = [\"a/b\", \"a\", \"./a/\", \"a/Masters/en\", \"a/Masters\"]",
         {"html:a/Masters/en/v.html v5DebugHTML/en/v.html", "html:a/Masters/x.html v5DebugHTML/x.html",
          "html:a/b/Masters/y.html v5DebugHTML/y.html"}},
        {"root_inside_masters",
         "a/Masters/x.html a/Masters/XML/x.xml a/Masters/en/x.html",
         "roots = [\"a/Masters/XML\"]",
         {"xml:a/Masters/XML/x.xml v5DebugXML/x.xml"}},
        {"excludes",
         "a/Masters/x.html a/Masters/y.html b/Masters/z.html c/d/Masters/z.html",
         "exclude = [\"a/Masters/x*\", \"b/**\", \"**/d\"]",
         {"html:a/Masters/y.html v5DebugHTML/y.html"}},
        {"selected_formats",
         "Masters/x.html Masters/XML/x.html Masters/XML/x.xml",
         "formats = [\"html\"]",
         {"html:Masters/x.html v5DebugHTML/x.html"}},
        {"links_outside_masters_once",
         "b/Masters/x.html @a>b @b/back>.. @c/Masters>../b/Masters b/Masters/y.html",
         "",
         {"html:b/Masters/x.html v5DebugHTML/x.html", "html:b/Masters/y.html v5DebugHTML/y.html"}},
        {"link_gives_the_name_masters",
         "gold/x.html @r/Masters>../gold",
         "",
         {"html:r/Masters/x.html v5DebugHTML/x.html"}},
        {"links_inside_masters_by_their_path",
         "Masters/en/x.html @Masters/de>en @Masters/en/again>. @Masters/file.html>en/x.html @Masters/lost.html>nil",
         "",
         {"html:Masters/de/x.html v5DebugHTML/de/x.html", "html:Masters/en/x.html v5DebugHTML/en/x.html",
          "html:Masters/file.html v5DebugHTML/file.html", "html:Masters/lost.html v5DebugHTML/lost.html"}},
        {"no_masters", "a/masters/x.html a/Mastersx/x.html a/x.html", "", {}},
    }),
    [](auto const& info) { return info.param.name; });

TEST(Plan, TakesAnyNames) {
    MoTestTree const tree;
    Texts const names = {"a\nb.html", "a\"'b.html", "a\xe9.html", "*?[.html", " .html", ".html"};
    for (std::string const& name : names)
        MoTestTree::write("r/Masters/" + name, "");
    fs::create_directory("r/Masters/folder.html");
    MoDiffPlan const plan = MoDiffPlan::make(configured());
    Texts expected;
    for (std::string const& name : names)
        expected.push_back("html:r/Masters/" + name + " v5DebugHTML/" + name);
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(expected, pairsOf(plan));
    EXPECT_EQ(6U, plan.selected.size());
    EXPECT_EQ(1U, plan.masterFolders);
}

TEST(Plan, WarnsOfMastersThatShareTheirActualFile) {
    MoTestTree const tree;
    make("a/Masters/x.html b/Masters/x.html b/Masters/y.html c/Masters/x.html d/Masters/en/x.html");
    Texts warnings;
    for (MoDiffPair const& pair : MoDiffPlan::make(configured()).pairs)
        warnings.push_back(pair.warnings.empty() ? "" : pair.warnings.at(0));
    EXPECT_THAT(warnings, ElementsAre("its actual file is also that of html:b/Masters/x.html and 1 more",
                                      "its actual file is also that of html:a/Masters/x.html and 1 more", "",
                                      "its actual file is also that of html:a/Masters/x.html and 1 more", ""));
}

TEST(Plan, RefusesTwoTablesThatClaimOneMaster) {
    MoTestTree const tree;
    make("Masters/a_en.tvd");
    std::string const table = "[[tvd]]\ntype-name = \"T\"\n";
    EXPECT_THAT(found(table + table), ElementsAre("tvd:Masters/a_en.tvd T/a_en.tvd")) << "they say the same";
    try {
        found(table + "[[tvd]]\ntype-name = \"T2\"\nmaster-suffix = \"en\"\n");
        ADD_FAILURE() << "not refused";
    } catch (MoDiffConfigurationError const& error) {
        EXPECT_THAT(error.what(), HasSubstr("modiff.toml:3:1"));
        EXPECT_THAT(error.what(), HasSubstr("modiff.toml:1:1"));
        EXPECT_THAT(error.what(), HasSubstr("both claim Masters/a_en.tvd"));
    }
}

TEST(Plan, RefusesRulesThatMeetNothing) {
    MoTestTree const tree;
    make("reports/drafts/Masters/x.html reports/sales/Masters/x.html reports/sales/Masters/charts/x_en.tvd");
    struct Row {
        std::string toml;
        char const* error;
    };
    std::string const chart = "[[tvd]]\ntype-name = \"T\"\n";
    Row const rows[] = {
        {"exclude = [\"**/sales\",\n\"reports/draft/**\"]",
         "modiff.toml:2:1: exclude reports/draft/** leaves nothing out; did you mean reports/drafts?"},
        {"exclude = [\"zzz\"]", "modiff.toml:1:12: exclude zzz leaves nothing out"},
        {"exclude = [\"reports/sales/**\", \"**/charts/x_*\"]", "modiff.toml:1:32: exclude **/charts/x_* leaves"},
        {"jobs = 1\n" + chart + "master-sub-directory = \"chart\"",
         "modiff.toml:2:1: [[tvd]] meets no master: no file in a folder chart of Masters ends with .tvd; "
         "did you mean charts?"},
        {chart + "master-sub-directory = \"charts\"\nmaster-suffix = \"de\"",
         "modiff.toml:1:1: [[tvd]] meets no master: no file in a folder charts of Masters ends with _de.tvd"},
        {"[[prp]]\ntype-name = \"P\"", "modiff.toml:1:1: [[prp]] meets no master: no file in Masters ends with .prp"},
    };
    auto const errorOf = [](MoDiffSuiteConfiguration const& configuration) -> std::string {
        try {
            MoDiffExpectations const expectations(configuration, MoDiffPlan::make(configuration));
        } catch (MoDiffConfigurationError const& error) {
            return error.what();
        }
        return "";
    };
    for (Row const& row : rows) {
        EXPECT_THAT(errorOf(configured(row.toml)), testing::StartsWith(row.error));
        EXPECT_EQ("", errorOf(configured("formats = [\"html\"]\n" + (row.toml[0] == '[' ? row.toml : ""))));
    }
    MoDiffSuiteConfiguration narrowed = configured("exclude = [\"reports/drafts/**\"]\n[[expected]]\nreason = "
                                                   "\"r\"\npair = \"html:reports/sales/Masters/y.html\"");
    EXPECT_EQ("modiff.toml:4:8: the rule for html:reports/sales/Masters/y.html meets no pair; did you mean "
              "html:reports/sales/Masters/x.html?",
              errorOf(narrowed));
    MoDiffConfigurationReader::setOption(narrowed, "roots", {"reports/sales/Masters/charts"}, "--root");
    EXPECT_EQ("", errorOf(narrowed)) << "rules are for the whole tree";
    MoDiffConfigurationReader::setOption(narrowed, "exclude", {"reports/drafst"}, "--exclude");
    EXPECT_THAT(errorOf(narrowed), HasSubstr("--exclude: exclude reports/drafst leaves nothing out"));
}

TEST(Plan, NamesWhatCannotBeRead) {
    MoTestTree const tree;
    make("Masters/x.html file");
    EXPECT_THROW(found("roots = [\"nowhere\"]"), MoDiffConfigurationError);
    EXPECT_THROW(found("roots = [\"file\"]"), MoDiffConfigurationError);
    make("a/Masters/x.html b/Masters/en/x.html");
    // Root reads everything, so a path that is too long stands for a directory that is closed.
    std::string const step(250, 'd');
    fs::path const home = fs::current_path();
    for (int depth = 0; depth < 17; ++depth) {
        ASSERT_TRUE(fs::create_directory(step));
        fs::current_path(step);
    }
    fs::current_path(home);
    MoDiffPlan const plan = MoDiffPlan::make(configured("exclude = [\"old\"]"));
    EXPECT_EQ(3U, plan.pairs.size()) << "what can be read is compared";
    EXPECT_THAT(plan.unreadable,
                ElementsAre(testing::MatchesRegex("cannot read the directory d+/d.*: File name too long")));
    EXPECT_FALSE(plan.isWhole) << "the rule may be for what lies there";
}

TEST(Plan, DigestFollowsWhatDecidesVerdicts) {
    MoTestTree const tree;
    make("Masters/x.html Masters/XML/x.xml");
    auto const digest = [](char const* toml) { return MoDiffPlan::make(configured(toml)).digest; };
    std::string const plain = digest("");
    EXPECT_EQ(32U, plain.size());
    EXPECT_EQ(plain, digest("jobs = 2\ntime-limit = \"1s\""));
    for (char const* const toml : {"nul = \"warn\"", "ignore = [\"xlsx:filters\"]", "formats = [\"html\"]",
                                   "[[expected]]\npair = \"**\"\nreason = \"r\""})
        EXPECT_NE(plain, digest(toml)) << toml;
}

TEST(NewFiles, AreThoseThatNoPairClaims) {
    MoTestTree const tree;
    make("Masters/x.html Masters/de/x.html Masters/t_en.tvd ../webcontent/v5DebugHTML/x.html "
         "../webcontent/v5DebugHTML/new.html ../webcontent/v5DebugHTML/image.png ../webcontent/v5DebugHTML/new.htmlx "
         "../webcontent/v5DebugHTML/de/x.html ../webcontent/v5DebugHTML/fr/x.html ../webcontent/v5DebugPDF/a.pdf "
         "../webcontent/T/t_en.tvd ../webcontent/T/t_de.tvd ../webcontent/other/x.html "
         "@../webcontent/v5DebugHTML/fr/loop>..");
    auto const find = [](std::string const& toml) {
        MoDiffSuiteConfiguration const configuration =
            configured(toml + "[[tvd]]\ntype-name = \"T\"\nmaster-suffix = \"en\"");
        MoDiffPlan plan = MoDiffPlan::make(configuration);
        MoDiffNewFiles::find(configuration, plan);
        return plan;
    };
    EXPECT_THAT(find("").newFiles,
                ElementsAre("../webcontent/T/t_de.tvd", "../webcontent/v5DebugHTML/fr/x.html",
                            "../webcontent/v5DebugHTML/new.html", "../webcontent/v5DebugPDF/a.pdf"));
    EXPECT_THAT(find("sub-directories = [\"de\", \"fr\"]\nformats = [\"html\"]\n").newFiles,
                ElementsAre("../webcontent/v5DebugHTML/fr/x.html"));
    MoTestTree::write("../webcontent/v5DebugCSV", "a file where a directory ought to be");
    EXPECT_THAT(find("").unreadable, ElementsAre(HasSubstr("v5DebugCSV: Not a directory")));
}

} // namespace
