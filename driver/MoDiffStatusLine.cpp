#include "MoDiffStatusLine.h"

#include "MoDiffShownText.h"

#include <cstdlib>
#include <ostream>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

std::chrono::milliseconds const kRedraw{100};
std::chrono::seconds const kNowAndThen{10};
char const kClear[] = "\r\x1b[K";

/// Asked each time, so that the line is right after the window was resized.
std::size_t terminalColumns() {
    struct winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

} // namespace

MoDiffStatusLine::~MoDiffStatusLine() {
    clear();
}

MoDiffStatusLine::Mode MoDiffStatusLine::suitableMode() {
    char const* const terminal = std::getenv("TERM");
    bool const moves = isatty(STDOUT_FILENO) && terminal && std::string_view(terminal) != "dumb";
    return moves ? eMoving : eNowAndThen;
}

void MoDiffStatusLine::show(std::string const& text, std::string const& subject) {
    auto const now = std::chrono::steady_clock::now();
    if (m_last == std::chrono::steady_clock::time_point{} && m_mode == eNowAndThen)
        m_last = now; // what is done soon needs no line
    std::chrono::steady_clock::duration const pause = m_mode == eMoving ? kRedraw : kNowAndThen;
    if (m_mode == eNone || now - m_last < pause)
        return;
    m_last = now;
    draw(text, subject);
}

void MoDiffStatusLine::draw(std::string const& text, std::string const& subject) {
    if (m_mode == eNowAndThen) {
        m_out << text << MoDiffShownText::escaped(subject) << std::endl;
        return;
    }
    std::size_t const columns = terminalColumns() - 1; // the last one would wrap on some terminals
    if (text.size() >= columns)
        m_out << kClear << text.substr(0, columns);
    else
        m_out << kClear << text << MoDiffShownText::escapedEnd(subject, columns - text.size());
    m_out.flush();
    m_isDrawn = true;
}

void MoDiffStatusLine::clear() {
    if (!m_isDrawn)
        return;
    m_out << kClear << std::flush;
    m_isDrawn = false;
    m_last = {}; // drawn again soon
}
