#include "QPTTestHarness.h"

#include "I18NString.h"
#include "KLTFmDir.h"
#include "QPTTestCase.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <utility>

namespace {

char const kRule[] = "-------------------------";

char const* levelName(eLogLevel level) {
    switch (level) {
    case eLogNone:
        return "None";
    case eLogMinimal:
        return "Minimal";
    case eLogConcise:
        return "Concise";
    case eLogNormal:
        return "Normal";
    case eLogDetailed:
        return "Detailed";
    }
    return "";
}

void adoptWorkingDirectory() {
    char const* const directory = std::getenv("QPT_EFFECTIVE_WORKING_DIR");
    if (directory && *directory)
        KLTFmDir::setEffectiveWorkingDir(
            I18NString(directory, I18NGetPlatformDefaultEncoding(), -1, nullptr, nullptr));
}

/// Holds the stream's lock for a write. A stream whose buffer writes to the log itself finds its own thread inside
/// already, and must not wait for it.
class StreamGuard {
public:
    explicit StreamGuard(std::mutex& lock) : m_wasInside(s_isInside), m_lock(lock, std::defer_lock) {
        if (!m_wasInside)
            m_lock.lock();
        s_isInside = true;
    }
    ~StreamGuard() { s_isInside = m_wasInside; }
    StreamGuard(StreamGuard const&) = delete;
    StreamGuard& operator=(StreamGuard const&) = delete;

private:
    static thread_local bool s_isInside;
    bool const m_wasInside;
    std::unique_lock<std::mutex> m_lock;
};

thread_local bool StreamGuard::s_isInside = false;

} // namespace

QPTTestHarness* QPTTestHarness::m_instance = nullptr;

/// Completes the log of a script that was never ended.
struct QPTTestHarness::AtUnload {
    ~AtUnload() { delete std::exchange(m_instance, nullptr); }
    static AtUnload s_instance;
};

QPTTestHarness::AtUnload QPTTestHarness::AtUnload::s_instance;

QPTTestHarness* QPTTestHarness::instance() {
    if (!m_instance)
        m_instance = new QPTTestHarness;
    return m_instance;
}

QPTTestHarness::QPTTestHarness()
    : m_logStream(nullptr), m_logLevel(eLogNone), m_inScript(0), m_otherScriptErrors(0), m_otherFailed(0),
      m_otherPassed(0), m_otherWarned(0), m_cpuStart(0), m_cpuStop(0), m_elapsedStart(0), m_elapsedStop(0),
      m_harnessCpuTime(0), m_harnessElapsedTime(0), m_memoryState(0), m_memoryStart(0), m_memoryLeaked(0),
      m_currentTest(nullptr), m_outputLock(0), m_timerLock(0) {
    adoptWorkingDirectory();
}

QPTTestHarness::~QPTTestHarness() {
    deleteTestCases();
    try {
        closeLog();
    } catch (...) { // a log that cannot be completed must not end the process
    }
}

int QPTTestHarness::openLog(char const* fileName, int append) {
    m_logFilename = std::string(fileName ? fileName : "results.qpr");
    closeLog();
    m_logFile = std::make_unique<std::ofstream>();
    m_logStream = m_logFile.get();
    m_logFile->open(m_logFilename, std::ios::out | (append ? std::ios::app : std::ios::trunc));
    return m_logFile->is_open() ? 1 : 0;
}

int QPTTestHarness::closeLog() {
    if (!m_logFile)
        return 0;
    std::unique_ptr<std::ofstream> const file = std::move(m_logFile);
    m_logStream = nullptr;
    if (!file->is_open())
        return 0;
    file->close();
    return 1;
}

char const* QPTTestHarness::getLogFilename() {
    return m_logFilename.c_str();
}

eLogLevel QPTTestHarness::getLogLevel() {
    return m_logLevel;
}

eLogLevel QPTTestHarness::setLogLevel(eLogLevel level) {
    eLogLevel const previous = std::exchange(m_logLevel, level);
    if (level != previous && m_logStream)
        writeTo(*m_logStream, std::string("Set Log Level: ") + levelName(level) + "\n");
    return previous;
}

void QPTTestHarness::writeLog(char const* text, eLogLevel level, int) {
    if (text && level <= m_logLevel)
        writeTo(m_logStream ? *m_logStream : std::cout, text);
}

void QPTTestHarness::writeLine(std::string const& text, eLogLevel level) {
    if (level <= m_logLevel)
        writeTo(m_logStream ? *m_logStream : std::cout, text + "\n");
}

void QPTTestHarness::writeTo(std::ostream& out, std::string_view text) {
    StreamGuard const guard(m_streamLock);
    out.write(text.data(), static_cast<std::streamsize>(text.length()));
}

void QPTTestHarness::lockOutput(int lock) {
    if (lock)
        m_outputLock.lock();
    else
        m_outputLock.unlock();
}

std::ostream& QPTTestHarness::logOstream() {
    if (!m_logStream)
        m_logStream = &std::cout;
    return *m_logStream;
}

void QPTTestHarness::startScript(char const* description, int) {
    if (m_inScript) {
        logScriptError(">> Script Error: startScript() called inside test script");
        return;
    }
    m_inScript = 1;
    writeBanner(std::cout, description);
    if (m_logStream && m_logStream != &std::cout)
        writeBanner(*m_logStream, description);
}

int QPTTestHarness::endScript(int toConsole) {
    if (!m_inScript)
        logScriptError(">> Script Error: endScript() called outside test script");
    int const failed = writeSummary(logOstream());
    if (toConsole)
        writeSummary(std::cout);
    m_instance = nullptr;
    delete this;
    return failed ? 0 : 1;
}

void QPTTestHarness::startTest(char const* name, char const* description) {
    if (!m_inScript) {
        logScriptError(">> Script Error: startTest() called outside test script");
        return;
    }
    auto test = std::make_unique<QPTTestCase>(name);
    m_testCases.push_back(test.get());
    m_currentTest = test.release();
    if (m_logLevel >= eLogConcise)
        writeLine(std::string(kRule) + " Start Test: " + name, m_logLevel);
    if (description)
        writeLine(description, eLogNormal);
}

int QPTTestHarness::endTest() {
    if (m_currentTest) {
        std::string const name = m_currentTest->getTestCase();
        writeLine(std::string("\n") + kRule + " End Test: " + name.substr(0, name.find('\0')) + "\n", eLogConcise);
    } else {
        logScriptError(">> Script Error: endTest() called outside test case");
    }
    m_currentTest = nullptr;
    return 0;
}

int QPTTestHarness::logCheckPass() {
    return countCheck(&QPTTestCase::incPassedCount, ">> Script Error: logCheckPass() called outside test script");
}

int QPTTestHarness::logCheckFail() {
    return countCheck(&QPTTestCase::incFailedCount, ">> Script Error: logCheckFail() called outside test script");
}

int QPTTestHarness::logCheckWarn() {
    return countCheck(&QPTTestCase::incWarnedCount, ">> Script Error: logCheckWarn() called outside test script");
}

int QPTTestHarness::countCheck(void (QPTTestCase::*increment)(), char const* errorText) {
    if (!m_currentTest) {
        logScriptError(errorText);
        return 0;
    }
    (m_currentTest->*increment)();
    return 1;
}

void QPTTestHarness::logScriptError(char const* text) {
    if (text)
        writeLine(text, eLogMinimal);
    if (m_currentTest)
        m_currentTest->incScriptErrorCount();
    else
        ++m_otherScriptErrors;
}

std::list<QPTTestCase*>& QPTTestHarness::getTestCases() {
    return m_testCases;
}

QPTTestCase* QPTTestHarness::getCurrentTest() const {
    return m_currentTest;
}

void QPTTestHarness::setCurrentTest(QPTTestCase* test) {
    m_currentTest = test;
}

void QPTTestHarness::deleteTestCases() {
    for (QPTTestCase const* const test : m_testCases)
        delete test;
    m_testCases.clear();
}
