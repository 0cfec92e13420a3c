#ifndef MO_DIFF_FILE_LOG_H
#define MO_DIFF_FILE_LOG_H

#include "MoDiffStreamLog.h"

#include <fstream>

/// Writes the XML test summary to a file, complete with its closing tag when this object is destroyed. A result of
/// the class MoDiffResultFail itself is not recorded. Used from one thread at a time.
class KLT_EXPORT MoDiffFileLog : public MoDiffListener {
public:
    /// Creates or empties the file. When that fails, everything written is ignored and nothing is raised.
    explicit MoDiffFileLog(char const* fileName);
    ~MoDiffFileLog() override;
    MoDiffFileLog(MoDiffFileLog const&) = delete;
    MoDiffFileLog& operator=(MoDiffFileLog const&) = delete;

    using MoDiffListener::comparisonNotification;
    void comparisonNotification(MoDiffResultPass const& result) override;
    void comparisonNotification(MoDiffResultFailDiff const& result) override;
    void comparisonNotification(MoDiffResultFailFileMissing const& result) override;

private:
    std::ofstream m_file;
    MoDiffStreamLog m_log;
};

#endif
