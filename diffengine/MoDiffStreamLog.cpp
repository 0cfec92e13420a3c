#include "MoDiffStreamLog.h"

#include "KLTAssert.h"
#include "KLTByteBuffer.h"
#include "MoHelper.h"

#include <ostream>

namespace {

char const kModule[] = "MoDiffStreamLog";

/// Writes a text encoded for XML.
class XmlEncoded {
public:
    explicit XmlEncoded(std::string const& text) : m_buffer(256, 256) {
        MoHelper::xmlEncode(text.c_str(), text.length(), m_buffer);
    }
    friend std::ostream& operator<<(std::ostream& out, XmlEncoded const& encoded) {
        return out << encoded.m_buffer.str();
    }

private:
    KLTByteBuffer m_buffer;
};

} // namespace

MoDiffStreamLog::MoDiffStreamLog() : m_stream(nullptr) {
}

MoDiffStreamLog::~MoDiffStreamLog() = default;

void MoDiffStreamLog::open(std::ostream* stream) {
    KLT_ASSERT_AT(kModule, 68, "KLT_ASSERT(stream);", stream);
    KLT_ASSERT_AT(kModule, 69, "KLT_ASSERT_NAMED(!m_stream, \"Log is already opened.\");", !m_stream);
    m_stream = stream;
    *m_stream << "<TestSummary>" << std::endl;
}

void MoDiffStreamLog::close() {
    KLT_ASSERT_AT(kModule, 77, "KLT_ASSERT_NAMED(m_stream, \"Stream was not opened.\");", m_stream);
    *m_stream << "</TestSummary>" << std::endl;
    m_stream = nullptr;
}

void MoDiffStreamLog::writeLogEntry(char const* tag, std::string const& masterName, std::string const& actualName) {
    KLT_ASSERT_AT(kModule, 105, "KLT_ASSERT_NAMED(m_stream, \"Stream was not opened.\");", m_stream);
    XmlEncoded const master(masterName);
    XmlEncoded const actual(actualName);
    *m_stream << "<" << tag << "><ReturnCode>1</ReturnCode><Command/><ResultsFile/><StepNumber>0</StepNumber>"
              << "<MasterFile>" << master << "</MasterFile><CurrentFile>" << actual << "</CurrentFile></" << tag
              << ">" << std::endl;
}

void MoDiffStreamLog::comparisonNotification(MoDiffResultPass const& result) {
    writeLogEntry("TestCasePassDiff", result.getMasterName(), result.getActualName());
}

void MoDiffStreamLog::comparisonNotification(MoDiffResultFail const& result) {
    writeLogEntry("TestCaseFailureDiff", result.getMasterName(), result.getActualName());
}
