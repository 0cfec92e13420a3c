#include "MoDiffHarnessLog.h"

#include "KLTFmDir.h"
#include "MoDiffShownText.h"
#include "QPTOutputLock.h"

#include <filesystem>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <utility>

using MoDiffShownText::escaped;

MoDiffHarnessLog::MoDiffHarnessLog(std::string const& fileName, eLogLevel level, std::string const& description)
    : m_harness(QPTTestHarness::instance()) {
    m_harness->setLogLevel(level);
    bool const isOpen = m_harness->openLog(fileName.c_str(), /*append=*/0) != 0;
    if (isOpen)
        m_harness->startScript(description.c_str(), 0);
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

void MoDiffHarnessLog::logCheck(char const* description, bool passed) {
    passed ? m_harness->logCheckPass() : m_harness->logCheckFail();
    eLogLevel const level = passed ? eLogConcise : eLogMinimal;
    QPTOutputLock const lock(*m_harness);
    m_harness->writeLog(passed ? "PASSED: " : ">>  FAILED: ", level, passed ? 0 : 1);
    m_harness->writeLog(escaped(description).c_str(), level, passed ? 0 : 1);
    m_harness->writeLog("\n", level, passed ? 0 : 1);
}
