#ifndef MO_DIFF_SURVEY_CONSOLE_H
#define MO_DIFF_SURVEY_CONSOLE_H

#include "MoDiffConsole.h"
#include "MoDiffSurvey.h"

#include <iosfwd>

/// Shows what a survey found, and what in it may not be meant so.
class MoDiffSurveyConsole {
public:
    /// @param out kept; must outlive this object
    MoDiffSurveyConsole(std::ostream& out, bool colours)
        : m_out(out), m_console(out, MoDiffConsole::eById, colours) {}

    void show(MoDiffSurvey const& survey);

private:
    void showPlace(MoDiffSurvey const& survey);
    void showFormats(MoDiffSurvey const& survey);
    void showTables(MoDiffSurvey const& survey);
    void showSubDirectories(MoDiffSurvey const& survey);
    void showDoubts(MoDiffSurvey const& survey);

    std::ostream& m_out;
    MoDiffConsole m_console;
};

#endif
