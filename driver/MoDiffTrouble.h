#ifndef MO_DIFF_TROUBLE_H
#define MO_DIFF_TROUBLE_H

#include <exception>
#include <string>

/// Tells on standard error what keeps modiff from doing what it was asked, and counts it. Standard output is flushed
/// before, so that the lines of both come in the right order.
class MoDiffTrouble {
public:
    /// @param text one line; shown escaped
    void report(std::string const& text);
    /// Shows an error with the way it took.
    void report(std::exception const& error);
    /// The same, with what was being done before it.
    void report(std::string const& subject, std::exception const& error);

    unsigned long getCount() const { return m_count; }

private:
    void showWay(std::exception const& error);

    unsigned long m_count = 0;
};

#endif
