#ifndef QPT_TEST_CASE_H
#define QPT_TEST_CASE_H

#include "KLTExport.h"
#include "KLTThreadCriticalSection.h"

#include <string>

/// One test of a script: its name and its counts. It fails with its first script error or failed check; warnings
/// never fail it. Counts may be incremented and read from several threads at once; setting belongs to one.
class KLT_EXPORT QPTTestCase {
public:
    QPTTestCase();
    /// @param name copied; null raises KLTAssertError
    explicit QPTTestCase(char const* name);
    QPTTestCase(QPTTestCase const&) = delete;
    QPTTestCase& operator=(QPTTestCase const&) = delete;

    /// The test's name.
    std::string getTestCase() const;
    void setTestCase(std::string name);

    long getScriptErrorCount() const;
    long getFailedCount() const;
    long getPassedCount() const;
    long getWarnedCount() const;

    void setScriptErrorCount(long count);
    void setFailedCount(long count);
    void setPassedCount(long count);
    void setWarnedCount(long count);

    void incScriptErrorCount();
    void incFailedCount();
    void incPassedCount();
    void incWarnedCount();

private:
    long read(long const& count) const;
    void increment(long& count);

    std::string m_testCase;
    long m_scriptErrorCount;
    long m_failedCount;
    long m_passedCount;
    long m_warnedCount;
    mutable KLTThreadCriticalSection m_lock;
};

#endif
