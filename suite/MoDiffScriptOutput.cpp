#include "MoDiffScriptOutput.h"

namespace {

std::size_t const kHead = 8192;
std::size_t const kTail = 2048;

} // namespace

void MoDiffScriptOutput::clear() {
    m_head.clear();
    m_tail.clear();
    m_dropped = 0;
}

void MoDiffScriptOutput::add(std::string_view text) {
    std::string_view const first = text.substr(0, kHead - m_head.size());
    m_head += first;
    m_tail += text.substr(first.size());
    if (m_tail.size() > kTail) {
        m_dropped += m_tail.size() - kTail;
        m_tail.erase(0, m_tail.size() - kTail);
    }
}

std::string MoDiffScriptOutput::getText() const {
    if (m_dropped == 0)
        return m_head + m_tail;
    return m_head + "\n[" + std::to_string(m_dropped) + " bytes are left out here]\n" + m_tail;
}

std::string MoDiffScriptOutput::getLastLine() const {
    std::string const& text = m_tail.empty() ? m_head : m_tail;
    std::size_t const last = text.find_last_not_of("\r\n");
    if (last == std::string::npos)
        return "";
    std::size_t const before = text.find_last_of('\n', last);
    std::size_t const begin = before == std::string::npos ? 0 : before + 1;
    return text.substr(begin, last + 1 - begin);
}
