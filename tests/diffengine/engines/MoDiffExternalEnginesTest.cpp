#include "MoRecordingListener.h"
#include "MoTestTree.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

/// A run folder with a "python" in PATH that records its arguments, each ended by a NUL byte, and then does what
/// the file "act" says.
class ExternalEnginesTest : public testing::Test {
protected:
    ExternalEnginesTest() : m_oldPath(std::getenv("PATH")) {
        fs::path const python = m_tree.root() / "bin/python";
        MoTestTree::write(python, "#!/bin/sh\nprintf '%s\\0' \"$@\" > argv\n. ./act\n");
        fs::permissions(python, fs::perms(0755));
        setenv("PATH", (python.parent_path().string() + ":/usr/bin:/bin").c_str(), 1);
        MoTestTree::write("act", "exit 0\n");
        MoTestTree::write("m", "");
        MoTestTree::write("a", "");
    }
    ~ExternalEnginesTest() override { setenv("PATH", m_oldPath.c_str(), 1); }

    MoTestTree const m_tree;
    std::string const m_oldPath;
    MoDiffXlsxFileEngine const m_xlsx{nullptr};
    MoDiffPdfFileEngine const m_pdf{nullptr};
    MoDiffVmdFileEngine const m_vmd{nullptr};
};

TEST_F(ExternalEnginesTest, every_name_reaches_the_script_as_one_argument_and_runs_nothing) {
    std::string const nul(1, '\0'), tools = "../../src/kavu/Builds/tools/";
    // clang-format off
    std::pair<MoDiffFileEngine const*, std::string> const rows[] = {
        {&m_xlsx, tools + "DiffXlsx/DiffXlsx.py" + nul + "-o" + nul + "DiffXlsx.qpr"},
        {&m_pdf, tools + "diffpdf/diffPdfFiles.py"}, {&m_vmd, tools + "diffvmd/diffvmd.py"}};
    char const* const names[] = {
        "plain", "two  blanks ", "-rf", "quote\"; touch owned; \"", "it's", "$(touch owned)", "`touch owned`",
        "$HOME",
        "back\\slash\\", "\\\"", "\\$(touch owned)", "new\nline", "\\\n", "tab\t", "a;touch owned",
        "!x #&|<>(){}*?[a]~",
        "%s%n", "\xE9\xFF", "é"};
    // clang-format on
    for (std::string const name : names) {
        MoTestTree::write(name, "");
        MoTestTree::write("d/" + name, "");
        for (auto const& [engine, arguments] : rows) {
            EXPECT_EQ("pass", outcomeOf(engine->performDiff(name, "d/" + name)));
            EXPECT_EQ(arguments + nul + name + nul + "d/" + name + nul, MoTestTree::read("argv"));
        }
        EXPECT_FALSE(fs::exists("owned")) << name;
    }
}

TEST_F(ExternalEnginesTest, only_status_zero_is_a_pass) {
    MoDiffFileEngine const* const engines[] = {&m_xlsx, &m_pdf, &m_vmd};
    for (MoDiffFileEngine const* engine : engines) {
        for (char const* act : {"exit 1", "exit 2", "exit 255", "kill -9 $$", "exit 0"}) {
            MoTestTree::write("act", act);
            EXPECT_EQ(std::string(act) == "exit 0" ? "pass" : "diff", outcomeOf(engine->performDiff("m", "a")))
                << act;
        }
        fs::remove("argv");
        EXPECT_EQ("missing no", outcomeOf(engine->performDiff("no", "nor this")));
        EXPECT_EQ("missing no", outcomeOf(engine->performDiff("m", "no")));
        EXPECT_EQ("missing .", outcomeOf(engine->performDiff(".", "a")));
        EXPECT_FALSE(fs::exists("argv")); // no script was run
    }
    setenv("PATH", "/nowhere", 1);
    EXPECT_EQ("diff", outcomeOf(m_pdf.performDiff("m", "a")));
}

/// Runs nothing and says what it is told to.
struct FakeRunner : MoDiffScriptRunner {
    int run(char const* command, std::string const& masterFile, std::string const& actualFile) override {
        calls.push_back(std::string(command) + " | " + masterFile + " | " + actualFile);
        if (status < 0)
            throw std::runtime_error("interrupted");
        return status;
    }
    int status = 0;
    std::vector<std::string> calls;
};

TEST_F(ExternalEnginesTest, an_installed_runner_takes_the_place_of_the_shell_until_the_one_before_is_back) {
    FakeRunner runner, inner;
    EXPECT_EQ(nullptr, MoDiffScriptRunner::set(&runner));
    EXPECT_EQ("pass", outcomeOf(m_pdf.performDiff("m", "a")));
    runner.status = 256;
    EXPECT_EQ("diff", outcomeOf(m_vmd.performDiff("m", "a")));
    EXPECT_EQ("missing no", outcomeOf(m_vmd.performDiff("m", "no")));
    runner.status = -1;
    EXPECT_THROW(delete m_pdf.performDiff("m", "a"), std::runtime_error);
    EXPECT_EQ(&runner, MoDiffScriptRunner::set(&inner));
    MoTestTree::write("$x", "");
    EXPECT_EQ("pass", outcomeOf(m_xlsx.performDiff("m", "$x")));
    EXPECT_EQ(&inner, MoDiffScriptRunner::set(nullptr));
    std::string const tools = "python ../../src/kavu/Builds/tools/";
    std::string const pdf = tools + R"(diffpdf/diffPdfFiles.py "m" "a" | m | a)";
    EXPECT_EQ((std::vector{pdf, tools + R"(diffvmd/diffvmd.py "m" "a" | m | a)", pdf}), runner.calls);
    EXPECT_EQ(std::vector{tools + R"(DiffXlsx/DiffXlsx.py -o DiffXlsx.qpr "m" "\$x" | m | $x)"}, inner.calls);
    EXPECT_FALSE(fs::exists("argv"));
    EXPECT_EQ("pass", outcomeOf(m_pdf.performDiff("m", "a")));
    EXPECT_TRUE(fs::exists("argv")); // by the shell again
}

} // namespace
