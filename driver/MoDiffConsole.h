#ifndef MO_DIFF_CONSOLE_H
#define MO_DIFF_CONSOLE_H

#include "MoDiffPairResult.h"

#include <iosfwd>
#include <string>

/// Shows results: the outcome's word, the pair, why it did not pass, and below it what is known of the difference.
/// Everything that comes from files and names is escaped.
class MoDiffConsole {
public:
    /// How a pair is called.
    enum Naming { eById, eByFiles };
    enum Colour { eNoColour = 0, eRed = 31, eGreen = 32, eYellow = 33, eMagenta = 35 };

    /// @param out     kept; must outlive this object
    /// @param colours whether words are shown in colour
    MoDiffConsole(std::ostream& out, Naming naming, bool colours)
        : m_out(out), m_naming(naming), m_colours(colours) {}

    /// Whether standard output is a terminal whose user wants colours.
    static bool isColourful();

    /// Shows a result in one line.
    void showLine(MoDiffPairResult const& result);
    /// Shows a result with the surroundings of its difference or the script's words.
    void show(MoDiffPairResult const& result);
    /// Shows the warnings of a result, each in a line.
    void showWarnings(MoDiffPairResult const& result);
    /// Shows a line that is no result.
    /// @param subject shown escaped
    void showNote(Colour colour, std::string const& word, std::string const& subject, std::string const& text);

private:
    std::string subjectOf(MoDiffPairResult const& result) const;
    void showDifference(MoDiffDifference const& difference);
    void showOutput(std::string const& output);
    std::string coloured(Colour colour, std::string const& text) const;

    std::ostream& m_out;
    Naming m_naming;
    bool m_colours;
};

#endif
