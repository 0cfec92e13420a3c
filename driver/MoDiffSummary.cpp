#include "MoDiffSummary.h"

#include <stdexcept>

int MoDiffSummary::LineBuffer::sync() {
    try {
        m_file.write(str());
        str(std::string());
        return 0;
    } catch (std::exception const& error) { // the stream only knows good and bad; close() tells the reason
        if (m_failure.empty())
            m_failure = error.what();
        return -1;
    }
}

MoDiffSummary::MoDiffSummary(std::string const& fileName) : m_buffer(fileName), m_stream(&m_buffer) {
    m_log.open(&m_stream);
    raiseFailure();
}

void MoDiffSummary::close() {
    m_log.close();
    raiseFailure();
}

void MoDiffSummary::raiseFailure() const {
    if (!m_stream)
        throw std::runtime_error(m_buffer.getFailure());
}
