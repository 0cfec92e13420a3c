#include "MoDiffDoctor.h"
#include "MoDiffConfigurationReader.h"
#include "MoDiffToolCheck.h"
#include "MoTestTree.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

void PrintTo(MoDiffFinding const& finding, std::ostream* out) {
    *out << finding.text;
}

namespace {

/// Sets a variable of the environment for a scope.
class Variable {
public:
    Variable(char const* name, std::string const& value) : m_name(name) {
        char const* const old = std::getenv(name);
        m_wasSet = old;
        m_old = old ? old : "";
        setenv(name, value.c_str(), 1);
    }
    ~Variable() {
        if (m_wasSet)
            setenv(m_name, m_old.c_str(), 1);
        else
            unsetenv(m_name);
    }
    Variable(Variable const&) = delete;
    Variable& operator=(Variable const&) = delete;

private:
    char const* m_name;
    bool m_wasSet;
    std::string m_old;
};

void layOutTools() {
    fs::create_directories("../../src/kavu/Builds");
    fs::copy(MODIFF_SOURCE_DIR "/tools", MoDiffToolCheck::kToolsDirectory, fs::copy_options::recursive);
}

std::vector<std::string> missingFor(MoDiffTool const& tool) {
    return MoDiffToolCheck::findMissing(tool);
}

MoDiffTool const kScript = {"diffvmd/diffvmd.py", "", ""};

TEST(ToolCheck, NamesWhatIsMissingAndHowToGetIt) {
    MoTestTree const tree;
    EXPECT_THAT(missingFor({kScript.script, "No_such_module", ""}),
                ElementsAre(HasSubstr("there is no script"), HasSubstr("apt-get install python3-no_such_module")));
    EXPECT_THAT(
        missingFor({"diffvmd/diffvmd.py", "", "pdfinfo"}),
        Contains("there is no script ../../src/kavu/Builds/tools/diffvmd/diffvmd.py; lay the scripts out with: "
                 "modiff install-tools DIR, where DIR is two levels above the working directory"));
    layOutTools();
    EXPECT_THAT(missingFor(kScript), IsEmpty());
    EXPECT_THAT(missingFor({kScript.script, "no_such_module json", ""}),
                ElementsAre(AllOf(HasSubstr("finds no module no_such_module;"),
                                  HasSubstr("apt-get install python3-no_such_module"))));
    fs::remove_all("../../src/kavu/Builds/tools/modifftools");
    EXPECT_THAT(missingFor(kScript),
                ElementsAre(AllOf(HasSubstr("finds no module modifftools;"), HasSubstr("modiff install-tools DIR"))));
    Variable const path("PATH", "/nowhere");
    EXPECT_THAT(missingFor({kScript.script, "", "pdfinfo"}),
                ElementsAre("there is no program python in PATH; get it with: apt-get install python-is-python3",
                            "there is no program pdfinfo in PATH; get it with: apt-get install poppler-utils"));
}

TEST(ToolCheck, StartFilesOfTheInterpreterDeceiveNobody) {
    MoTestTree const tree;
    layOutTools();
    struct Row {
        char const* startFile;
        bool isHarmless;
    };
    Row const rows[] = {
        {"print('hello', end='')", true},
        {"import sys; sys.stderr.write('hello')", true},
        {"print('modiff-probe: done')\nimport os; os._exit(0)", false},
        {"import os, sys; sys.stdout.flush(); os._exit(0)", false},
        {"import atexit, os; atexit.register(os._exit, 0)", false},
        {"import sys; sys.exit = lambda status: None", false},
    };
    Variable const path("PYTHONPATH", fs::current_path().string());
    for (Row const& row : rows) {
        MoTestTree::write("sitecustomize.py", row.startFile);
        fs::remove_all("__pycache__");
        EXPECT_EQ(row.isHarmless, missingFor(kScript).empty()) << row.startFile;
    }
}

auto finding(MoDiffFinding::Severity severity, std::string const& text) {
    return AllOf(Field(&MoDiffFinding::severity, severity), Field(&MoDiffFinding::text, HasSubstr(text)));
}

std::vector<MoDiffFinding> examined(std::string const& toml) {
    MoTestTree::write("modiff.toml", toml);
    MoDiffSuiteConfiguration configuration = MoDiffConfigurationReader::read("modiff.toml");
    MoDiffConfigurationReader::resolve(configuration);
    return MoDiffDoctor::examine(configuration, "out/of/here");
}

TEST(Doctor, FindsNothingInAGoodTree) {
    MoTestTree const tree;
    layOutTools();
    MoTestTree::write("r/Masters/x.html", "");
    MoTestTree::write("../webcontent/v5DebugHTML/x.html", "");
    std::vector<MoDiffFinding> const findings = examined("formats = [\"html\", \"vmd\"]\nroots = [\"r\"]\njobs = 1");
    EXPECT_THAT(findings, Not(Contains(Field(&MoDiffFinding::severity, MoDiffFinding::eTrouble))));
    for (char const* const text : {"vmd: the script diffvmd/diffvmd.py has all", "python is ", "ICU has version",
                                   "1 master in 1 folder Masters", "MiB are free below"})
        EXPECT_THAT(findings, Contains(finding(MoDiffFinding::eFine, text)));
}

TEST(Doctor, FindsWhatIsWrongWithATree) {
    MoTestTree const tree;
    for (char const* const name :
         {"a/Masters/x.html", "b/Masters/x.html", "a/Masters/Case.html", "a/Masters/XSL2007/x.xlsx",
          "a/Masters/notes.txt", "a/master/x.html", "../webcontent/v5DebugHTML/case.html"})
        MoTestTree::write(name, "");
    fs::create_symlink("nowhere", "a/Masters/lost.html");
    fs::create_directories("c");
    fs::create_directories("a/Masters/CVS");
    MoTestTree::write("a/Masters/CSV/x.csv", "");
    auto const findings = examined("formats = [\"html\", \"csv\", \"xlsx\"]\nroots = [\"a\", \"b\", \"c\", \"d\"]\n"
                                   "exclude = [\"old\"]\n[[expected]]\npair = \"html:old\"\nreason = \"r\"");
    struct Row {
        MoDiffFinding::Severity severity;
        char const* text;
    };
    Row const rows[] = {
        {MoDiffFinding::eTrouble, "xlsx: there is no script"},
        {MoDiffFinding::eTrouble, "cannot read the directory d: No such file or directory"},
        {MoDiffFinding::eTrouble, "the root c holds no master"},
        {MoDiffFinding::eTrouble, "the directory a/Masters/XSL2007 looks like XLS2007"},
        {MoDiffFinding::eAdvice, "the directory a/Masters/CVS looks like CSV, and holds no master"},
        {MoDiffFinding::eAdvice, "the directory a/master is not searched"},
        {MoDiffFinding::eAdvice, "1 file in a/Masters belongs to no format"},
        {MoDiffFinding::eTrouble, "the master a/Masters/lost.html cannot be read: No such file or directory"},
        {MoDiffFinding::eTrouble, "the output directory ../webcontent/v5DebugCSV is not there, so 1 actual file is"},
        {MoDiffFinding::eTrouble, "the master a/Masters/Case.html differs from the actual file "
                                  "../webcontent/v5DebugHTML/case.html in case"},
        {MoDiffFinding::eAdvice,
         "2 masters share the actual file ../webcontent/v5DebugHTML/x.html: a/Masters/x.html, "
         "b/Masters/x.html"},
        {MoDiffFinding::eTrouble, "modiff.toml:5:8: the rule for html:old meets no pair"},
        {MoDiffFinding::eTrouble, "modiff.toml:3:12: exclude old leaves nothing out"},
    };
    for (Row const& row : rows)
        EXPECT_THAT(findings, Contains(finding(row.severity, row.text)));
    for (MoDiffFinding const& found : findings)
        EXPECT_EQ(found.severity == MoDiffFinding::eFine, found.remedy.empty()) << found.text;
}

TEST(Doctor, TellsManyFindingsOfAKindInShort) {
    MoTestTree const tree;
    MoTestTree::write("../webcontent/v5DebugHTML/keep", "");
    for (int number = 0; number < 25; ++number)
        MoTestTree::write("Masters/x" + std::to_string(number) + "/notes.txt", "");
    auto const findings = examined("formats = [\"html\"]");
    EXPECT_THAT(findings, Contains(finding(MoDiffFinding::eAdvice, "5 more findings of this kind")));
    EXPECT_THAT(findings, Contains(finding(MoDiffFinding::eAdvice, "belongs to no format")).Times(20));
}

TEST(Doctor, FindsAnEmptyTreeAndNarrowLimits) {
    MoTestTree const tree;
    struct rlimit old;
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &old));
    struct rlimit const narrow = {60, old.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &narrow));
    auto const findings = examined("formats = [\"html\"]\njobs = 4");
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &old));
    EXPECT_THAT(findings, Contains(finding(MoDiffFinding::eTrouble, "open files are limited to 60, a run wants 96")));
    EXPECT_THAT(findings, Contains(finding(MoDiffFinding::eTrouble, "there is no folder Masters below ")));
}

} // namespace
