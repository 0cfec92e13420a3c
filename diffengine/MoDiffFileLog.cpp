#include "MoDiffFileLog.h"

MoDiffFileLog::MoDiffFileLog(char const* fileName) : m_file(fileName, std::ios::out | std::ios::trunc) {
    m_log.open(&m_file);
}

MoDiffFileLog::~MoDiffFileLog() {
    try {
        m_log.close();
        m_file.close();
    } catch (...) { // a summary that cannot be completed must not end the process
    }
}

void MoDiffFileLog::comparisonNotification(MoDiffResultPass const& result) {
    result.notifyListener(m_log);
}

void MoDiffFileLog::comparisonNotification(MoDiffResultFailDiff const& result) {
    result.notifyListener(m_log);
}

void MoDiffFileLog::comparisonNotification(MoDiffResultFailFileMissing const& result) {
    result.notifyListener(m_log);
}
