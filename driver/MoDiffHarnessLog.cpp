#include "MoDiffHarnessLog.h"

#include "KLTFmDir.h"
#include "MoDiffResultFailDiff.h"
#include "MoDiffResultFailDiffNormalized.h"
#include "MoDiffResultFailFileMissing.h"
#include "MoDiffResultPass.h"
#include "MoDiffShownText.h"
#include "QPTOutputLock.h"

#include <algorithm>
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

/// A text, allocated as MoDiffResultFailDiffNormalized wants it.
char* textWith(std::size_t filling, std::string const& end) {
    char* const text = new char[filling + end.size() + 1];
    std::fill_n(text, filling, ' ');
    std::copy_n(end.c_str(), end.size() + 1, text + filling);
    return text;
}

/// The library's result for what became of a pair, with names that may be shown; null when there was no verdict. Of
/// normalized texts it holds what stands behind the first difference, and filling before it.
std::unique_ptr<MoDiffResult const> rebuilt(MoDiffPairResult const& result) {
    std::string const master = escaped(result.master);
    std::string const actual = escaped(result.actual);
    switch (result.outcome) {
    case MoDiffOutcome::ePassed:
        return std::make_unique<MoDiffResultPass>(master, actual);
    case MoDiffOutcome::eMissing:
        return std::make_unique<MoDiffResultFailFileMissing>(master, actual, actual);
    case MoDiffOutcome::eDifferent:
        break;
    default:
        return nullptr;
    }
    if (!result.difference || result.difference->line > 0)
        return std::make_unique<MoDiffResultFailDiff>(master, actual);
    auto const position = static_cast<std::size_t>(result.difference->position);
    return std::make_unique<MoDiffResultFailDiffNormalized>(
        master, actual, textWith(position, result.difference->after.master),
        textWith(position, result.difference->after.actual), static_cast<long>(position));
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

void MoDiffHarnessLog::record(MoDiffPairResult const& result) {
    if (auto const verdict = rebuilt(result))
        verdict->notifyListener(*this);
    else
        recordError(result.master + ": " + result.detail);
    for (std::string const& warning : result.warnings)
        m_harness->writeLog((">>  WARNED: " + escaped(result.master + ": " + warning) + "\n").c_str(), eLogMinimal,
                            0);
}

void MoDiffHarnessLog::logCheck(char const* description, bool passed) {
    passed ? m_harness->logCheckPass() : m_harness->logCheckFail();
    eLogLevel const level = passed ? eLogConcise : eLogMinimal;
    QPTOutputLock const lock(*m_harness);
    m_harness->writeLog(passed ? "PASSED: " : ">>  FAILED: ", level, passed ? 0 : 1);
    m_harness->writeLog(description, level, passed ? 0 : 1);
    m_harness->writeLog("\n", level, passed ? 0 : 1);
}
