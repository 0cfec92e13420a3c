#ifndef MO_DIFF_STATUS_LINE_H
#define MO_DIFF_STATUS_LINE_H

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <string>

/// Tells how far something has got: on a terminal in a line at the bottom that is drawn anew, elsewhere in a line now
/// and then.
class MoDiffStatusLine {
public:
    enum Mode { eMoving, eNowAndThen, eNone };

    /// @param out kept; must outlive this object; standard output, whose terminal tells the width
    MoDiffStatusLine(std::ostream& out, Mode mode) : m_out(out), m_mode(mode) {}
    /// Clears the line.
    ~MoDiffStatusLine();
    MoDiffStatusLine(MoDiffStatusLine const&) = delete;
    MoDiffStatusLine& operator=(MoDiffStatusLine const&) = delete;

    /// What suits standard output.
    static Mode suitableMode();

    /// Shows a state unless the last one was shown just before.
    /// @param text    comes first; nothing in it needs to be escaped
    /// @param subject what is being done, shown escaped; its end when there is no room for all of it
    void show(std::string const& text, std::string const& subject);
    /// Makes room for a line of text at the place of the moving line.
    void clear();

private:
    void draw(std::string const& text, std::string const& subject);

    std::ostream& m_out;
    Mode m_mode;
    bool m_isDrawn = false;
    std::chrono::steady_clock::time_point m_last{};
};

#endif
