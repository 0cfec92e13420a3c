#include "MoDiffHarnessLog.h"

#include "KLTFmDir.h"
#include "MoDiffResultFailDiffNormalized.h"
#include "MoDiffResultFailFileMissing.h"
#include "MoDiffResultPass.h"
#include "MoDiffShownText.h"
#include "QPTOutputLock.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <utility>

using MoDiffShownText::escaped;

namespace {

/// Catches what is written to standard output as long as it lives.
class CaughtOutput {
public:
    CaughtOutput() : m_before(std::cout.rdbuf(&m_text)) {}
    ~CaughtOutput() { std::cout.rdbuf(m_before); }
    CaughtOutput(CaughtOutput const&) = delete;
    CaughtOutput& operator=(CaughtOutput const&) = delete;

    std::string text() const { return m_text.str(); }

private:
    std::stringbuf m_text;
    std::streambuf* m_before;
};

char* copyOf(char const* text) {
    std::size_t const size = std::strlen(text) + 1;
    return std::copy(text, text + size, new char[size]) - size;
}

} // namespace

MoDiffHarnessLog::MoDiffHarnessLog(std::string const& fileName, eLogLevel level, std::string const& description)
    : m_harness(QPTTestHarness::instance()) {
    m_harness->setLogLevel(level);
    bool const isOpen = m_harness->openLog(fileName.c_str(), /*append=*/0) != 0;
    if (isOpen)
        startScript(description);
    if (isOpen && m_harness->logOstream().flush())
        return;
    m_harness->setLogLevel(eLogNone); // so that no verdict is written
    m_harness->endScript(/*toConsole=*/0);
    throw std::runtime_error("cannot write the log " + fileName);
}

MoDiffHarnessLog::~MoDiffHarnessLog() {
    if (m_harness)
        m_harness->endScript(/*toConsole=*/0);
}

void MoDiffHarnessLog::startScript(std::string const& description) {
    std::string banner;
    {
        CaughtOutput const caught;
        m_harness->startScript(description.c_str(), 0);
        banner = caught.text();
    }
    std::string const name = m_harness->getLogFilename();
    std::size_t const place = banner.find(name + " =\n"); // the harness shows it as it is, up to the frame
    if (place != std::string::npos)
        banner.replace(place, name.size(), escaped(name));
    std::cout << banner;
}

void MoDiffHarnessLog::startReport(std::string const& report) {
    std::string name;
    KLTFmDir::splitPath(report.c_str(), nullptr, &name);
    m_harness->startTest(escaped(name).c_str(), escaped(report).c_str());
}

void MoDiffHarnessLog::endReport() {
    m_harness->endTest();
}

void MoDiffHarnessLog::recordError(std::string const& text) {
    m_harness->logScriptError((">> Script Error: " + escaped(text)).c_str());
}

bool MoDiffHarnessLog::finish(bool toConsole) {
    std::string const fileName = m_harness->getLogFilename();
    std::ostringstream summary;
    m_harness->writeSummary(summary);
    std::streamoff const length = m_harness->logOstream().tellp() + static_cast<std::streamoff>(summary.tellp());
    bool const isComplete = static_cast<bool>(m_harness->logOstream().flush());
    std::exchange(m_harness, nullptr)->endScript(toConsole);
    std::error_code error; // the harness does not tell whether it could write its last lines
    bool const isRegular = std::filesystem::is_regular_file(fileName, error);
    return isComplete && (!isRegular || std::filesystem::file_size(fileName) == static_cast<std::uintmax_t>(length));
}

void MoDiffHarnessLog::comparisonNotification(MoDiffResult const& result) {
    std::string const master = escaped(result.getMasterName());
    std::string const actual = escaped(result.getActualName());
    MoDiffResultPass const passed(master, actual);
    MoDiffResultFail const failed(master, actual);
    MoDiffResult const& shown = result.isPassed() ? static_cast<MoDiffResult const&>(passed) : failed;
    MoDiffQptLog::comparisonNotification(shown);
}

void MoDiffHarnessLog::comparisonNotification(MoDiffResultFailDiffNormalized const& result) {
    MoDiffResultFailDiffNormalized const shown(escaped(result.getMasterName()), escaped(result.getActualName()),
                                               copyOf(result.getNormalizedMaster()),
                                               copyOf(result.getNormalizedActual()), result.getDiffPosition());
    MoDiffQptLog::comparisonNotification(shown);
}

void MoDiffHarnessLog::comparisonNotification(MoDiffResultFailFileMissing const& result) {
    MoDiffResultFailFileMissing const shown(escaped(result.getMasterName()), escaped(result.getActualName()),
                                            escaped(result.getMissingFile()));
    MoDiffQptLog::comparisonNotification(shown);
}

void MoDiffHarnessLog::logCheck(char const* description, bool passed) {
    passed ? m_harness->logCheckPass() : m_harness->logCheckFail();
    eLogLevel const level = passed ? eLogConcise : eLogMinimal;
    QPTOutputLock const lock(*m_harness);
    m_harness->writeLog(passed ? "PASSED: " : ">>  FAILED: ", level, passed ? 0 : 1);
    m_harness->writeLog(description, level, passed ? 0 : 1);
    m_harness->writeLog("\n", level, passed ? 0 : 1);
}
