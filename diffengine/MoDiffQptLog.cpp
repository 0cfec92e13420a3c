#include "MoDiffQptLog.h"

#include "KLTAssert.h"
#include "MoDiffResultFailDiffNormalized.h"
#include "MoDiffResultFailFileMissing.h"
#include "QPTOutputLock.h"

#include <algorithm>
#include <cstring>

namespace {

char const kModule[] = "MoDiffQptLog";
std::size_t const kDumpLength = 128;

std::string bothNames(MoDiffResult const& result) {
    return result.getMasterName() + " and " + result.getActualName();
}

void writeHeader(QPTTestHarness& harness, MoDiffResult const& result) {
    harness.writeLog(">>  FAILED: Check File: ", eLogMinimal, 1);
    harness.writeLog(result.getMasterName().c_str(), eLogMinimal, 1);
    harness.writeLog("\n", eLogMinimal, 1);
    harness.writeLog(result.getActualName().c_str(), eLogMinimal, 1);
    harness.writeLog("\n", eLogMinimal, 1);
}

unsigned char const* bytesFrom(char const* text, std::size_t position) {
    return reinterpret_cast<unsigned char const*>(text) + position;
}

void dumpDifference(QPTTestHarness& harness, MoDiffResultFailDiffNormalized const& result) {
    char const* const masterBuffer = result.getNormalizedMaster();
    char const* const actualBuffer = result.getNormalizedActual();
    KLT_ASSERT_AT(kModule, 115, "KLT_ASSERT(masterBuffer);", masterBuffer);
    KLT_ASSERT_AT(kModule, 116, "KLT_ASSERT(actualBuffer);", actualBuffer);
    std::size_t const shorter = std::min(std::strlen(masterBuffer), std::strlen(actualBuffer));
    std::size_t const position = std::min(static_cast<std::size_t>(result.getDiffPosition()), shorter);
    std::size_t const count = std::min(shorter - position, kDumpLength);
    harness.dumpBuffer(bytesFrom(actualBuffer, position), bytesFrom(masterBuffer, position), count, position);
}

} // namespace

MoDiffQptLog::MoDiffQptLog() = default;

MoDiffQptLog::~MoDiffQptLog() = default;

void MoDiffQptLog::comparisonNotification(MoDiffResult const& result) {
    logCheck(("Contents are equivalent: " + bothNames(result)).c_str(), result.isPassed());
}

void MoDiffQptLog::comparisonNotification(MoDiffResultFailFileMissing const& result) {
    char const* const side = result.getMissingFile() == result.getMasterName() ? "Master" : "Actual";
    logCheck((side + (" file is missing: " + result.getMissingFile())).c_str(), false);
}

void MoDiffQptLog::comparisonNotification(MoDiffResultFailDiffNormalized const& result) {
    logCheck(("Normalized contents are equivalent: " + bothNames(result)).c_str(), false);
    QPTTestHarness* const harness = getHarness();
    KLT_ASSERT_AT(kModule, 98, "KLT_ASSERT(harness);", harness);
    QPTOutputLock const lock(*harness);
    writeHeader(*harness, result);
    dumpDifference(*harness, result);
    harness->writeLog("\n", eLogNormal, 0);
}
