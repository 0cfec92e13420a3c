#ifndef MO_DIFF_TERMINAL_H
#define MO_DIFF_TERMINAL_H

#include <cstddef>
#include <string>
#include <termios.h>

/// The terminal as a screen with single keys: while an object lives, another screen is shown and keys come without
/// being echoed. Everything is as before when it goes, also for an interrupt, of which readKey() tells.
class MoDiffTerminal {
public:
    struct Size {
        std::size_t rows;
        std::size_t columns;
    };

    /// Whether standard input and output are a terminal that can be used so.
    static bool isThere();
    /// Of the terminal of standard output; 24 x 80 when it does not tell.
    static Size size();

    MoDiffTerminal();
    ~MoDiffTerminal();
    MoDiffTerminal(MoDiffTerminal const&) = delete;
    MoDiffTerminal& operator=(MoDiffTerminal const&) = delete;

    /// Waits for a key.
    /// @return a character in UTF-8; "up", "down", "pageup", "pagedown", "home", "end"; "enter", "escape",
    ///         "backspace"; "resize" when the window has another size; "" when a signal asks the program to end or
    ///         the terminal is gone
    std::string readKey();

private:
    int readByte(int milliseconds);
    std::string readSequence();

    termios m_before = {};
    void (*m_resizeBefore)(int) = nullptr;
};

#endif
