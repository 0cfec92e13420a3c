#ifndef MO_DIFF_CONSOLE_H
#define MO_DIFF_CONSOLE_H

#include "MoDiffFormatTable.h"
#include "MoDiffListener.h"
#include "MoDiffShownText.h"

#include <iosfwd>
#include <string>
#include <string_view>

/// Shows each result on one line, a difference whose place is known with an excerpt of both texts below it, and
/// counts the outcomes.
class MoDiffConsole : public MoDiffListener {
public:
    /// @param out     kept; must outlive this object
    /// @param colours whether outcomes are shown in colour
    MoDiffConsole(std::ostream& out, bool colours);

    /// Whether standard output is a terminal whose user wants colours.
    static bool isColourful();

    /// How the files were compared, which tells how the place of a difference is found.
    void setComparison(MoDiffFormatRow::Comparison comparison) { m_comparison = comparison; }

    using MoDiffListener::comparisonNotification;
    void comparisonNotification(MoDiffResultPass const& result) override;
    void comparisonNotification(MoDiffResultFail const& result) override;
    void comparisonNotification(MoDiffResultFailDiff const& result) override;
    void comparisonNotification(MoDiffResultFailDiffNormalized const& result) override;
    void comparisonNotification(MoDiffResultFailFileMissing const& result) override;

    /// Tells that a report has no master.
    /// @param glob where masters were looked for
    void showWithoutMaster(std::string const& report, std::string const& glob);
    /// Shows a difference that is known in detail.
    /// @param place what follows the two names
    void showDifference(MoDiffResult const& result, std::string const& place, MoDiffShownText::Excerpt const& master,
                        MoDiffShownText::Excerpt const& actual);
    /// The same, with excerpts around the place at which two texts part.
    void showDifference(MoDiffResult const& result, std::string const& place, std::string_view master,
                        std::string_view actual, std::size_t position);
    /// Shows the closing line.
    /// @param troubles how many reports ended in trouble
    void showCounts(unsigned long troubles);

    unsigned long getCompared() const { return m_passed + m_different + m_missing; }
    unsigned long getFailed() const { return m_different + m_missing; }
    unsigned long getMissing() const { return m_missing; }
    unsigned long getWithoutMaster() const { return m_withoutMaster; }

private:
    enum Colour { eGreen = 32, eRed = 31, eYellow = 33 };
    void startLine(Colour colour, char const* word, std::string const& first, std::string const& second);
    void startLine(Colour colour, char const* word, MoDiffResult const& result);
    void showExcerpt(char const* side, MoDiffShownText::Excerpt const& excerpt, std::size_t columnsBefore);
    std::string coloured(Colour colour, std::string const& text) const;

    std::ostream& m_out;
    bool m_colours;
    MoDiffFormatRow::Comparison m_comparison = MoDiffFormatRow::eCleansedText;
    unsigned long m_passed = 0;
    unsigned long m_different = 0;
    unsigned long m_missing = 0;
    unsigned long m_withoutMaster = 0;
};

#endif
