// A test script as a report tester would write it. Its files are made in the directory given as argument (default:
// the working directory), where it leaves its log, script.qpr. One of its checks fails on purpose; the exit status
// is 0 when that is the only one.
#include "libMoDiffEngine.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <list>
#include <memory>
#include <string>
#include <vector>

namespace {

/// Records the results of a verification as checks of the current test.
class ScriptLog : public MoDiffQptLog {
public:
    void logCheck(char const* description, bool passed) override {
        QPTTestHarness& harness = *getHarness();
        if (!(passed ? harness.logCheckPass() : harness.logCheckFail()))
            return;
        QPTOutputLock const lock(harness);
        harness.writeLog(passed ? "PASSED: " : ">>  FAILED: ", passed ? eLogConcise : eLogMinimal, 0);
        harness.writeLog(description, passed ? eLogConcise : eLogMinimal, 0);
        harness.writeLog("\n", passed ? eLogConcise : eLogMinimal, 0);
    }
    QPTTestHarness* getHarness() override { return QPTTestHarness::instance(); }
};

void write(char const* fileName, std::string const& text) {
    std::ofstream(fileName) << text;
}

void checkFiles(QPTTestHarness& harness) {
    harness.startTest("SaveReport", "The saved report holds what the page shows");
    write("expected.txt", "Region: North\nTotal: 42\n");
    write("actual.txt", "Region: North\nTotal: 42\n");
    harness.checkNamedFile("saved text", "actual.txt", "expected.txt", 0);
    write("stale.txt", "Region: North\nTotal: 41\n");
    harness.checkNamedFileWarn("yesterday's text", "stale.txt", "expected.txt");
    harness.endTest();
}

void measure(QPTTestHarness& harness) {
    harness.startTest("RenderPage", "Rendering is quick; its rows stay in memory");
    harness.startMemory();
    harness.startTimer();
    std::vector<std::string> const rows(20000, std::string(40, 'x'));
    harness.stopTimer();
    harness.getTimer(eCpuTime, 0);
    harness.resetTimer();
    harness.stopMemory();
    std::cout << rows.size() << " rows take " << harness.getMemory() << " bytes\n";
    harness.checkNamedMemory("first row", rows.front().data(), rows.back().data(), rows.front().size(), 0);
    harness.endTest();
}

void compareTexts(QPTTestHarness& harness) {
    harness.startTest("CompareReports", "Fails on purpose: the totals differ");
    write("master.html", "<td id=\"a1\">Total: 42</td>\r\n");
    write("rendered.html", "<td id=\"b7\">Total: 43</td>\n");
    ScriptLog log;
    std::list<MoDiffNormalizationPattern const*> const patterns = {&MoDiffNormalizationPatterns::getIdPattern()};
    std::unique_ptr<MoDiffResult const> const result(
        MoDiffLib::textFileComparison("master.html", "rendered.html", patterns, 0));
    result->notifyListener(log);
    harness.endTest();
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 1)
        std::filesystem::current_path(argv[1]);
    QPTTestHarness& harness = *QPTTestHarness::instance();
    harness.setLogLevel(eLogNormal);
    if (!harness.openLog("script.qpr", 0)) {
        std::cerr << "cannot write script.qpr\n";
        return 2;
    }
    harness.startScript("Sample script", 0);
    checkFiles(harness);
    measure(harness);
    compareTexts(harness);
    long failed = 0;
    for (QPTTestCase const* const test : harness.getTestCases())
        failed += test->getFailedCount() + test->getScriptErrorCount();
    int const passed = harness.endScript(1); // the harness is gone from here on
    return passed == 0 && failed == 1 ? 0 : 1;
}
