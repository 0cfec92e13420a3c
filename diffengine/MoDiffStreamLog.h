#ifndef MO_DIFF_STREAM_LOG_H
#define MO_DIFF_STREAM_LOG_H

#include "MoDiffListener.h"

#include <iosfwd>
#include <string>

/// Writes each result as one line of an XML test summary to a stream, which is flushed after every line. Errors of
/// the stream are left in its state. Used from one thread at a time.
class KLT_EXPORT MoDiffStreamLog : public MoDiffListener {
public:
    MoDiffStreamLog();
    /// Leaves an open summary without its closing tag and does not touch the stream.
    ~MoDiffStreamLog() override;

    /// Starts a summary on a stream, which the caller keeps and which must live until close(). Raises KLTAssertError
    /// when it is null or when a summary is open.
    void open(std::ostream* stream);
    /// Ends the summary and forgets the stream. Raises KLTAssertError when none is open.
    void close();

    /// Writes one element with both names encoded. Raises KLTAssertError when no summary is open.
    void writeLogEntry(char const* tag, std::string const& masterName, std::string const& actualName);

    using MoDiffListener::comparisonNotification;
    void comparisonNotification(MoDiffResultPass const& result) override;
    void comparisonNotification(MoDiffResultFail const& result) override;

private:
    std::ostream* m_stream;
};

#endif
