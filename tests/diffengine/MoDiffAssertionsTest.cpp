#include "MoRecordingListener.h"
#include "MoTestTree.h"

#include <functional>
#include <gtest/gtest.h>
#include <sstream>

namespace {

using L = MoDiffLib;

void slurp(char const* name) {
    MoFileHandle file(name, "r");
    L::Text const text(L::slurpFile(file));
}

void compare(char const* actual, L::Patterns const& patterns) {
    outcomeOf(L::textFileComparison("file", actual, patterns, 0));
}

void exhaustStack() {
    std::string text(3000000, 'a');
    MoDiffNormalizationPattern("(a|b)*c").normalizeText(text.data());
}

void withLog(std::function<void(MoDiffStreamLog&)> const& use) {
    std::ostringstream out;
    MoDiffStreamLog log;
    log.open(&out);
    use(log);
}

char t[] = "x";
char const kFile[] = "MoDiffFileEngine", kPattern[] = "MoDiffNormalizationPattern", kLib[] = "MoDiffLib";
char const kLog[] = "MoDiffStreamLog", kNotOpened[] = "KLT_ASSERT_NAMED(m_stream, \"Stream was not opened.\");";
char const kOpened[] = "KLT_ASSERT_NAMED(!m_stream, \"Log is already opened.\");";
char const kMaster[] = "KLT_ASSERT(masterBuffer);", kCurrent[] = "KLT_ASSERT(currentBuffer);";
char const kReplace[] = "KLT_ASSERT_NAMED(U_SUCCESS (status), \"Replacement using regular expression failed.\");";
char const kCompiled[] = "KLT_ASSERT_NAMED(m_regEx, \"Regular expression compiled\");";
char const kRead[] = "KLT_ASSERT_NAMED(ok, \"Unable to read all of the contents of file \");";

// clang-format off
struct {
    std::function<void()> provoke;
    char const *text, *module;
    int line;
} const kRows[] = {
    {[] { MoDiffFileEngine::Notifier(MoDiffResultPass("m", "a"))(nullptr); }, "KLT_ASSERT(listener);", kFile, 52},
    {[] { MoDiffNormalizationPattern("(a"); }, kCompiled, kPattern, 42},
    {[] { MoDiffNormalizationPatterns::getIdPattern().normalizeText(nullptr); }, "KLT_ASSERT(buffer);", kPattern, 72},
    {exhaustStack, kReplace, kPattern, 110},
    {[] { slurp("nowhere"); }, "KLT_ASSERT(fp);", kLib, 89},
    {[] {
         MoFileHandle nowhere("nowhere", "r");
         L::Text texts[2];
         L::slurpFiles(nowhere, nowhere, texts[0], texts[1]);
     },
     "KLT_ASSERT(fp);", kLib, 89},
    {[] { L::cleanse(nullptr, t, {}); }, kMaster, kLib, 124},
    {[] { L::cleanse(t, nullptr, {}); }, kCurrent, kLib, 125},
    {[] { L::cleanse(t, t, {nullptr}); }, "KLT_ASSERT(pattern);", kLib, 135},
    {[] { compare("file", {nullptr}); }, "KLT_ASSERT(pattern);", kLib, 135}, // though the files are equal
    {[] { L::cleanse(nullptr, t, {}, 0, 1); }, kMaster, kLib, 150},
    {[] { L::cleanse(t, nullptr, {}, 1, 0); }, kCurrent, kLib, 151},
    {[] { L::compareStrings(nullptr, t); }, kMaster, kLib, 164},
    {[] { L::compareStrings(t, nullptr); }, kCurrent, kLib, 165},
    {[] { slurp("/proc/self/status"); }, kRead, kLib, 238}, // longer than its length, like a file that grows
    {[] { compare("/proc/self/status", {}); }, kRead, kLib, 238},
    {[] { MoDiffStreamLog().open(nullptr); }, "KLT_ASSERT(stream);", kLog, 68},
    {[] { withLog([](auto& log) { log.open(&std::cout); }); }, kOpened, kLog, 69},
    {[] { MoDiffStreamLog().close(); }, kNotOpened, kLog, 77},
    {[] { withLog([](auto& log) { log.close(), log.close(); }); }, kNotOpened, kLog, 77},
    {[] { MoDiffStreamLog().writeLogEntry("T", "m", "a"); }, kNotOpened, kLog, 105},
    {[] { MoDiffStreamLog().comparisonNotification(MoDiffResultFailDiff("m", "a")); }, kNotOpened, kLog, 105}};
// clang-format on

TEST(Assertions, carry_text_module_and_line) {
    MoTestTree const tree;
    MoTestTree::write("file", "x");
    long const before = MoTestTree::count("/proc/self/fd");
    for (auto const& row : kRows) {
        try {
            row.provoke();
            ADD_FAILURE() << "not raised: " << row.text << row.line;
        } catch (KLTAssertError const& error) {
            KLTBackTraceEntry const& entry = error.getBackTrace().front();
            EXPECT_STREQ(row.text, error.getText());
            EXPECT_STREQ(row.module, entry.location.getFileName());
            EXPECT_EQ(row.line, entry.location.getLine());
            EXPECT_EQ("KLT_THROW", entry.tag + entry.text);
            EXPECT_EQ(1U, error.getBackTrace().size());
        }
    }
    EXPECT_EQ(before, MoTestTree::count("/proc/self/fd"));
}

} // namespace
