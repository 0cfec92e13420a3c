#ifndef QPT_TEST_HARNESS_H
#define QPT_TEST_HARNESS_H

#include "KLTExport.h"
#include "KLTThreadCriticalSection.h"

#include <atomic>
#include <cstddef>
#include <ctime>
#include <iosfwd>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

class QPTTestCase;

/// How much the log tells: a line of a level is written when the harness's current level is that level or higher.
enum eLogLevel : int {
    eLogNone = 0,     ///< nothing but the banner; no verdict is reached
    eLogMinimal = 1,  ///< failed checks, warnings, script errors, a verdict in one line
    eLogConcise = 2,  ///< also the tests, the passed checks and the totals
    eLogNormal = 3,   ///< also descriptions, dumps, measured values and the table of tests
    eLogDetailed = 4, ///< dumps without a limit of rows
};

/// The two clocks of the harness's stopwatch.
enum eTimerType : int {
    eCpuTime = 0,     ///< the process's CPU time, in milliseconds
    eElapsedTime = 1, ///< wall time, in whole seconds
};

/// Records the run of one test script in a log: tests with their checks, script errors, timers, memory capture, and
/// at the end a table with the verdict.
///
///     QPTTestHarness* harness = QPTTestHarness::instance();
///     harness->setLogLevel(eLogNormal);
///     harness->openLog("results.qpr", 0);
///     harness->startScript("Nightly regression", 0);
///     harness->startTest("OpenReport", "Opens the sales report");
///     harness->checkNamedFile("body", "actual.txt", "expected.txt", 0);
///     harness->endTest();
///     int const passed = harness->endScript(1); // from here on the pointer dangles
///
/// Misuse is logged and counted as a script error, which fails the test or the script; it is never raised. Errors of
/// the log stream are left in its state: its lines are lost and the run goes on. An exception that a stream raises
/// because the script asked for it passes through, and no lock stays behind.
///
/// Threads: checks, counting and script errors may come from several threads at once, and the lines of one check
/// stay together. Everything else, the first instance() included, belongs to the script's own thread.
class KLT_EXPORT QPTTestHarness {
public:
    /// The process's harness, made on first use and again after endScript(). A harness that is still there when the
    /// library is unloaded is destroyed with it, so that the log is complete up to there.
    static QPTTestHarness* instance();

    QPTTestHarness(QPTTestHarness const&) = delete;
    QPTTestHarness& operator=(QPTTestHarness const&) = delete;

    /// Closes the log and opens another one. When that fails, lines are lost until the next openLog() or closeLog().
    /// @param fileName the path as the system takes it; null means "results.qpr"
    /// @param append   nonzero: keep what the file holds and write to its end
    /// @return 1 when the file is open, else 0
    int openLog(char const* fileName, int append);
    /// Closes the log file; later lines go to the console.
    /// @return 1 when a file was open, else 0
    int closeLog();
    /// The name last given to openLog(), empty before; valid until the next openLog() or endScript().
    char const* getLogFilename();

    eLogLevel getLogLevel();
    /// Sets the level and, when it changes and a log stream is set, says so in the log at any level.
    /// @return the previous level
    eLogLevel setLogLevel(eLogLevel level);

    /// Writes a text, to which nothing is added, when its level is not above the current one. Takes no output lock;
    /// a single text is never torn by another thread's.
    /// @param text NUL-terminated; null writes nothing
    /// The last argument has no effect; by convention 1 on lines about failures.
    void writeLog(char const* text, eLogLevel level, int);
    /// Takes (nonzero) or releases (0) the output lock, which keeps lines together; see QPTOutputLock for a scope.
    /// The lock is not recursive and the checks take it themselves. Only the thread that took it may release it.
    void lockOutput(int lock);
    /// The log stream, from now on the console (std::cout) when none was set; the harness's own.
    std::ostream& logOstream();

    /// Begins the script and writes the banner to the console and to the log file.
    /// @param description may be null
    /// The second argument has no effect; pass 0.
    void startScript(char const* description, int);
    /// Writes the summary to the log, closes it and destroys this harness with its tests.
    /// @param toConsole nonzero: write the summary to the console as well
    /// @return 1 when the script passed, else 0; always 1 at eLogNone, where no summary is made
    int endScript(int toConsole);
    /// Begins a test; one that was not ended keeps its counts.
    /// @param name        not null (raises KLTAssertError); its first 18 bytes show in the summary
    /// @param description may be null
    void startTest(char const* name, char const* description);
    /// Ends the current test. @return always 0
    int endTest();

    /// Count one check in the current test and write nothing.
    /// @return 1; 0 when there is no current test, which is a script error instead
    int logCheckPass();
    int logCheckFail();
    int logCheckWarn();
    /// Logs a script error and counts it in the current test, or apart from the tests when there is none.
    /// @param text may be null: then it is only counted
    void logScriptError(char const* text);

    /// Every test of this script in the order of their start. The harness owns them until endScript(); what a script
    /// adds must come from new, what it takes out is its own.
    std::list<QPTTestCase*>& getTestCases();
    /// The test between startTest() and endTest(), else null.
    QPTTestCase* getCurrentTest() const;
    /// Makes a test current, which must live until another one is; null leaves none current.
    void setCurrentTest(QPTTestCase* test);

    /// Writes the frame that opens a log, in the layout of the current level.
    /// @param description may be null
    void writeBanner(std::ostream& out, char const* description);
    /// Writes the frame that closes a log, in the layout of the current level, and changes no count.
    /// @return 1 when the script has failed, else 0; 0 also at eLogNone, where nothing is written
    int writeSummary(std::ostream& out);

    /// Checks that two files hold the same bytes, and logs the outcome with up to 128 bytes from the first
    /// difference on. A null name, a file that cannot be opened and a read error count as a difference.
    /// @param name what is checked, for the log
    /// @param warn nonzero: a difference is a warning, which never fails the test
    /// @return 1 when the check passed and was counted in a test, else 0
    int checkNamedFile(char const* name, char const* actualFile, char const* expectedFile, int warn);
    int checkNamedFileWarn(char const* name, char const* actualFile, char const* expectedFile);
    /// Checks that two buffers of the same length, in bytes, are equal, and logs the outcome with a dump. A null
    /// buffer counts as a difference.
    /// @return 1 when the check passed and was counted in a test, else 0
    int checkNamedMemory(char const* name, void const* actual, void const* expected, unsigned long length, int warn);
    int checkNamedMemoryWarn(char const* name, void const* actual, void const* expected, unsigned long length);
    /// @return 1 when the first length bytes are equal, else 0; 0 also when a pointer is null, even when both are
    int compareBuffer(void const* a, void const* b, unsigned long length);
    /// Writes the rows of 16 bytes that differ, at most 10 of them below eLogDetailed, and a line with the counts.
    /// REQUIRES: the caller holds the output lock.
    /// @param actual   may be null: the first row says so and is the last
    /// @param expected likewise
    /// @param length   in bytes, of both buffers
    /// @param offset   where the buffers begin in the whole, for display
    void dumpBuffer(unsigned char const* actual, unsigned char const* expected, unsigned long length,
                    unsigned long offset);

    /// The stopwatch: start, stop, any number of getTimer(), reset, start again. Other orders are script errors.
    void startTimer();
    void stopTimer();
    void resetTimer();
    /// Logs and returns the time between start and stop.
    /// @param type               which clock; any value but eCpuTime is taken for eElapsedTime
    /// @param includeHarnessTime 0: less the time that the harness has spent in checks since it was made, also
    ///                           outside the measured stretch, so that the result may be negative
    /// @return milliseconds for eCpuTime, else whole seconds; 0 while the timer is running, a script error
    long getTimer(eTimerType type, int includeHarnessTime);
    /// Adds to the harness's own time: CPU time in ticks of clock(), wall time in seconds. Any thread may call it.
    void addTimerValues(unsigned long cpuTicks, unsigned long elapsedSeconds);

    /// Memory capture: start, stop, getMemory() once. Other orders are script errors.
    void startMemory();
    void stopMemory();
    /// Logs and returns the bytes by which the heap grew between start and stop, 0 when it shrank. On misuse returns
    /// what the last stopMemory() found.
    long getMemory();

private:
    struct AtUnload;

    QPTTestHarness();
    ~QPTTestHarness();

    int countCheck(void (QPTTestCase::*increment)(), char const* errorText);
    int countDifference(int warn, char const* errorText);
    int recordPass(char const* kind, char const* name, char const* errorText);
    void writeLine(std::string const& text, eLogLevel level);
    void writeTo(std::ostream& out, std::string_view text);
    void dumpRows(unsigned char const* actual, unsigned char const* expected, unsigned long length,
                  unsigned long long offset);
    bool isTimerRunning() const;
    unsigned long harnessTime(unsigned long const& total);
    void deleteTestCases();

    static QPTTestHarness* m_instance;

    std::string m_logFilename;
    std::ostream* m_logStream; // not owned; null: the console
    std::unique_ptr<std::ofstream> m_logFile;
    eLogLevel m_logLevel;
    int m_inScript;
    std::atomic<long> m_otherScriptErrors; // these four: what happened outside any test
    long m_otherFailed;
    long m_otherPassed;
    long m_otherWarned;
    std::clock_t m_cpuStart; // the stopwatch; 0: not started or not stopped
    std::clock_t m_cpuStop;
    std::time_t m_elapsedStart;
    std::time_t m_elapsedStop;
    unsigned long m_harnessCpuTime;      // ticks; guarded by m_timerLock
    unsigned long m_harnessElapsedTime;  // seconds; guarded by m_timerLock
    int m_memoryState;                   // 0 idle, 1 running, 2 stopped
    unsigned long m_memoryStart;         // bytes
    unsigned long m_memoryLeaked;        // bytes
    std::list<QPTTestCase*> m_testCases; // owned
    QPTTestCase* m_currentTest;
    KLTThreadCriticalSection m_outputLock;
    KLTThreadCriticalSection m_timerLock;
    std::mutex m_streamLock; // held for a single write, so that unlocked writers do not break the stream
};

/// True when both NUL-terminated strings are equal; false when either pointer is null, even when both are.
KLT_EXPORT bool QPTCompareEqual(char const* a, char const* b);
KLT_EXPORT bool QPTCompareEqual(char* a, char* b);
KLT_EXPORT bool QPTCompareEqual(signed char* a, signed char* b);
KLT_EXPORT bool QPTCompareEqual(unsigned char* a, unsigned char* b);
KLT_EXPORT bool QPTCompareEqual(std::nullptr_t, std::nullptr_t);

/// Writes a NUL-terminated string, or "(null)" for null, to the harness's log stream at any level and without a
/// line end. Takes no lock.
KLT_EXPORT void QPTOutputValue(char const* value);
KLT_EXPORT void QPTOutputValue(char* value);
KLT_EXPORT void QPTOutputValue(signed char* value);
KLT_EXPORT void QPTOutputValue(unsigned char* value);
KLT_EXPORT void QPTOutputValue(std::nullptr_t);

#endif
