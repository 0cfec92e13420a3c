#include "MoDiffTerminal.h"

#include "MoDiffInterrupt.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <poll.h>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace {

int const kNone = -1;    // no byte came in time
int const kSignal = -2;  // a signal came
int const kGone = -3;    // nothing will come any more
int const kPause = 50;   // milliseconds within which the rest of a sequence comes
int const kForever = -1; // of poll()

volatile std::sig_atomic_t isResized = 0;

void noteResize(int) {
    isResized = 1;
}

std::array<std::pair<char const*, char const*>, 12> const kSequences = {{{"[A", "up"},
                                                                         {"[B", "down"},
                                                                         {"OA", "up"},
                                                                         {"OB", "down"},
                                                                         {"[5~", "pageup"},
                                                                         {"[6~", "pagedown"},
                                                                         {"[H", "home"},
                                                                         {"[F", "end"},
                                                                         {"OH", "home"},
                                                                         {"OF", "end"},
                                                                         {"[1~", "home"},
                                                                         {"[4~", "end"}}};

/// How many bytes follow the first one of a character.
int followingBytes(int first) {
    return first >= 0xf0 ? 3 : first >= 0xe0 ? 2 : first >= 0xc0 ? 1 : 0;
}

} // namespace

bool MoDiffTerminal::isThere() {
    char const* const terminal = std::getenv("TERM");
    return isatty(STDIN_FILENO) && isatty(STDOUT_FILENO) && terminal && std::string_view(terminal) != "dumb";
}

MoDiffTerminal::Size MoDiffTerminal::size() {
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) < 0 || size.ws_row == 0 || size.ws_col == 0)
        return {24, 80};
    return {size.ws_row, size.ws_col};
}

MoDiffTerminal::MoDiffTerminal() {
    tcgetattr(STDIN_FILENO, &m_before);
    termios keys = m_before;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    keys.c_iflag &= ~static_cast<tcflag_t>(IXON);
    keys.c_cc[VSUSP] = _POSIX_VDISABLE; // the screen would be left as it is
    keys.c_cc[VMIN] = 1;
    keys.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &keys);
    m_resizeBefore = std::signal(SIGWINCH, noteResize);
    std::cout << "\x1b[?1049h\x1b[?25l" << std::flush;
}

MoDiffTerminal::~MoDiffTerminal() {
    std::cout << "\x1b[0m\x1b[?25h\x1b[?1049l" << std::flush;
    std::signal(SIGWINCH, m_resizeBefore);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_before);
}

/// The next byte, or why there is none.
int MoDiffTerminal::readByte(int milliseconds) {
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    int const ready = poll(&input, 1, milliseconds); // unlike read() never taken up again after a signal
    if (ready < 0)
        return errno == EINTR ? kSignal : kGone;
    if (ready == 0)
        return kNone;
    unsigned char byte = 0;
    return read(STDIN_FILENO, &byte, 1) == 1 ? byte : kGone;
}

std::string MoDiffTerminal::readKey() {
    while (MoDiffInterrupt::getSignal() == 0) {
        if (std::exchange(isResized, 0))
            return "resize";
        int const byte = readByte(kForever);
        if (byte == kGone)
            return "";
        if (byte < 0)
            continue;
        if (byte == '\x1b')
            return readSequence();
        if (byte == '\r' || byte == '\n')
            return "enter";
        if (byte == '\b' || byte == 0x7f)
            return "backspace";
        std::string key(1, static_cast<char>(byte));
        for (int left = followingBytes(byte); left > 0; --left)
            if (int const next = readByte(kPause); next >= 0)
                key += static_cast<char>(next);
        return key;
    }
    return "";
}

/// What follows an escape. Sequences that are not known count as an escape.
std::string MoDiffTerminal::readSequence() {
    std::string sequence;
    for (int byte = readByte(kPause); byte >= 0; byte = readByte(kPause)) {
        sequence += static_cast<char>(byte);
        bool const isIntroducer = sequence.size() == 1 && (byte == '[' || byte == 'O');
        if (!isIntroducer && byte >= '@' && byte <= '~')
            break;
    }
    for (auto const& [bytes, name] : kSequences)
        if (sequence == bytes)
            return name;
    return "escape";
}
