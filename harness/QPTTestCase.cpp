#include "QPTTestCase.h"

#include "KLTAssert.h"
#include "KLTThreadGuard.h"

#include <utility>

namespace {

char const* notNull(char const* name) {
    KLT_ASSERT(name);
    return name;
}

} // namespace

QPTTestCase::QPTTestCase() : QPTTestCase("") {
}

QPTTestCase::QPTTestCase(char const* name)
    : m_testCase(notNull(name)), m_scriptErrorCount(0), m_failedCount(0), m_passedCount(0), m_warnedCount(0),
      m_lock(0) {
}

std::string QPTTestCase::getTestCase() const {
    return m_testCase;
}

void QPTTestCase::setTestCase(std::string name) {
    m_testCase = std::move(name);
}

long QPTTestCase::getScriptErrorCount() const {
    return read(m_scriptErrorCount);
}

long QPTTestCase::getFailedCount() const {
    return read(m_failedCount);
}

long QPTTestCase::getPassedCount() const {
    return read(m_passedCount);
}

long QPTTestCase::getWarnedCount() const {
    return read(m_warnedCount);
}

void QPTTestCase::setScriptErrorCount(long count) {
    m_scriptErrorCount = count;
}

void QPTTestCase::setFailedCount(long count) {
    m_failedCount = count;
}

void QPTTestCase::setPassedCount(long count) {
    m_passedCount = count;
}

void QPTTestCase::setWarnedCount(long count) {
    m_warnedCount = count;
}

void QPTTestCase::incScriptErrorCount() {
    increment(m_scriptErrorCount);
}

void QPTTestCase::incFailedCount() {
    increment(m_failedCount);
}

void QPTTestCase::incPassedCount() {
    increment(m_passedCount);
}

void QPTTestCase::incWarnedCount() {
    increment(m_warnedCount);
}

long QPTTestCase::read(long const& count) const {
    KLTThreadGuard const guard(m_lock);
    return count;
}

void QPTTestCase::increment(long& count) {
    KLTThreadGuard const guard(m_lock);
    ++count;
}
