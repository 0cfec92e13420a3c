// The banner and the summary of QPTTestHarness.
#include "QPTTestHarness.h"

#include "QPTTestCase.h"

#include <cstdio>
#include <ostream>
#include <string_view>

namespace {

char const kFullRule[] = "===========================================================================";
char const kThinRule[] = "=-------------------------------------------------------------------------=";
char const kTitle[] = "= Trelvo Test Harness v1.2                                                =";
char const kDescriptionLabel[] = "= Test Description: ";
char const kNoDescription[] = "= Test Description: None                                                  =";
char const kLogFileLabel[] = "= Log File: ";
char const kNoLogFile[] = "= Log File: None                                                          =";
char const kStartLabel[] = "=     Test Started: ";
char const kStartTail[] = "                             =";
char const kFinishLabel[] = "= Test Finished: ";
char const kFinishTail[] = "                                =";
char const kResultLabel[] = "          TEST RESULT:   ";
char const kConciseHeader1[] = "=                      Script  Checks  Checks  Checks               TEST  =";
char const kConciseHeader2[] = "=                      Errors  Failed  Passed  Warned              RESULT =";
char const kFullHeader1[] = "= Test                 Script  Checks  Checks  Checks               TEST  =";
char const kFullHeader2[] = "= Case                 Errors  Failed  Passed  Warned              RESULT =";
char const kOtherLabel[] = "= Other              ";
char const kTotalsLabel[] = "= TOTALS             ";
char const kResultGap[] = "             ";
char const kClosing[] = " =";

std::size_t const kDescriptionWidth = 53;
std::size_t const kLogFileWidth = 61;
std::size_t const kNameWidth = 18;

/// The counts of one row of the summary.
struct Counts {
    long scriptErrors;
    long failed;
    long passed;
    long warned;

    void add(Counts const& other) {
        scriptErrors += other.scriptErrors;
        failed += other.failed;
        passed += other.passed;
        warned += other.warned;
    }
    bool isFailure() const { return scriptErrors + failed >= 1; }
    char const* mark() const { return isFailure() ? ">> FAIL" : "   PASS"; }
};

Counts countsOf(QPTTestCase const& test) {
    return {test.getScriptErrorCount(), test.getFailedCount(), test.getPassedCount(), test.getWarnedCount()};
}

void putLine(std::ostream& out, std::string const& line) {
    out.write(line.data(), static_cast<std::streamsize>(line.length()));
    out.put('\n').flush();
}

std::string rightAligned(std::string_view text, std::size_t width) {
    std::string padded(text.length() < width ? width - text.length() : 0, ' ');
    return padded.append(text);
}

/// The local time as asctime() gives it, with a blank in place of the line end.
std::string timeStamp() {
    std::time_t const now = std::time(nullptr);
    struct tm local = {};
    char text[64] = "";
    tzset(); // localtime_r alone would not notice a change of the time zone
    if (!localtime_r(&now, &local) || !asctime_r(&local, text))
        return std::string(25, ' ');
    std::string stamp = text;
    stamp.back() = ' ';
    return stamp;
}

std::string row(std::string const& label, Counts const& counts) {
    char columns[4 * 32];
    std::snprintf(columns, sizeof columns, "   %5ld   %5ld   %5ld   %5ld", counts.scriptErrors, counts.failed,
                  counts.passed, counts.warned);
    return label + columns + kResultGap + counts.mark() + kClosing;
}

std::string testRow(QPTTestCase const& test) {
    std::string name = test.getTestCase();
    name.resize(kNameWidth, ' ');
    return row("= " + name + " ", countsOf(test));
}

void writeTableHead(std::ostream& out, std::string const& finished, char const* header1, char const* header2) {
    putLine(out, kFullRule);
    putLine(out, finished + kFinishTail);
    putLine(out, kThinRule);
    putLine(out, header1);
    putLine(out, header2);
    putLine(out, kThinRule);
}

void writeTableFoot(std::ostream& out, Counts const& totals) {
    putLine(out, kThinRule);
    putLine(out, row(kTotalsLabel, totals));
    putLine(out, kFullRule);
}

} // namespace

void QPTTestHarness::writeBanner(std::ostream& out, char const* description) {
    std::string const started = kStartLabel + timeStamp() + kStartTail;
    if (m_logLevel == eLogMinimal) {
        putLine(out, kTitle);
        putLine(out, started);
        return;
    }
    putLine(out, kFullRule);
    putLine(out, kTitle);
    putLine(out, kThinRule);
    if (m_logLevel != eLogConcise)
        putLine(out, description ? kDescriptionLabel + rightAligned(description, kDescriptionWidth) + kClosing
                                 : kNoDescription);
    if (&out != &logOstream())
        putLine(out, m_logFilename.empty() ? kNoLogFile
                                           : kLogFileLabel + rightAligned(m_logFilename, kLogFileWidth) + kClosing);
    putLine(out, started);
    putLine(out, kFullRule);
}

int QPTTestHarness::writeSummary(std::ostream& out) {
    if (m_logLevel <= eLogNone)
        return 0;
    std::string const finished = kFinishLabel + timeStamp();
    Counts const other = {m_otherScriptErrors, m_otherFailed, m_otherPassed, m_otherWarned};
    Counts totals = other;
    for (QPTTestCase const* const test : m_testCases)
        totals.add(countsOf(*test));
    if (m_logLevel == eLogMinimal) {
        putLine(out, finished + kResultLabel + totals.mark() + kClosing);
    } else if (m_logLevel == eLogConcise) {
        writeTableHead(out, finished, kConciseHeader1, kConciseHeader2);
        writeTableFoot(out, totals);
    } else {
        writeTableHead(out, finished, kFullHeader1, kFullHeader2);
        for (QPTTestCase const* const test : m_testCases)
            putLine(out, testRow(*test));
        putLine(out, row(kOtherLabel, other));
        writeTableFoot(out, totals);
    }
    return totals.isFailure() ? 1 : 0;
}
