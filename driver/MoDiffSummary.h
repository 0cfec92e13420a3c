#ifndef MO_DIFF_SUMMARY_H
#define MO_DIFF_SUMMARY_H

#include "MoDiffOutputFile.h"
#include "MoDiffStreamLog.h"

#include <ostream>
#include <sstream>
#include <string>

/// The XML test summary in a file. Each line is written whole when it is complete, so that a killed run leaves whole
/// lines only; a line that cannot be written is noticed, unlike with MoDiffFileLog.
class MoDiffSummary {
public:
    /// Creates or empties the file and writes the opening tag. Raises std::system_error when that fails.
    explicit MoDiffSummary(std::string const& fileName);

    MoDiffListener& getListener() { return m_log; }

    /// Writes the closing tag. Raises std::runtime_error when the file could not be written to its end.
    void close();

private:
    /// Collects a line and writes it when it is flushed.
    class LineBuffer : public std::stringbuf {
    public:
        explicit LineBuffer(std::string const& fileName) : m_file(fileName) {}
        std::string const& getFailure() const { return m_failure; }

    private:
        int sync() override;

        MoDiffOutputFile m_file;
        std::string m_failure; ///< the first one
    };

    void raiseFailure() const;

    LineBuffer m_buffer;
    std::ostream m_stream;
    MoDiffStreamLog m_log;
};

#endif
