#ifndef MO_DIFF_RUN_CONSOLE_H
#define MO_DIFF_RUN_CONSOLE_H

#include "MoDiffConsole.h"
#include "MoDiffRunEvents.h"
#include "MoDiffStatusLine.h"
#include "MoDiffTotals.h"

#include <chrono>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

/// Shows how a run goes on, and at its end all that did not pass, in the byte order of the ids.
class MoDiffRunConsole : public MoDiffRunEvents {
public:
    /// Which pairs are shown as they come, too.
    enum Listing { eAtEnd, eFailures, eAll };
    struct Options {
        MoDiffStatusLine::Mode progress;
        bool colours;
        Listing listing;
    };

    /// @param out kept; must outlive this object
    MoDiffRunConsole(std::ostream& out, Options const& options);

    /// Tells how far the search for masters has got, once it takes longer than somebody likes to wait.
    void discovering(std::size_t directories, std::size_t masters);
    /// The search has ended.
    void discovered() { m_line.clear(); }

    void started(std::size_t pairs) override;
    void takenUp(MoDiffPairResult const& result) override;
    void finished(MoDiffPairResult const& result) override;
    void progressed(Progress const& progress) override;

    /// Shows what came of all pairs.
    /// @param newFiles   actual files without a master
    /// @param unreadable directories, sentences with the reason
    void showEnd(std::vector<std::string> const& newFiles, std::vector<std::string> const& unreadable);

    /// The outcomes and how many pairs had each: "12 passed, 1 different".
    static std::string inWords(MoDiffTotals const& totals);

    /// Whether every pair of a format that a script compares ended in an error, as happens when the script lacks
    /// something.
    bool isScriptInTrouble() const;

private:
    using Counts = MoDiffTotals;
    struct Slow {
        double seconds;
        std::string id;
    };

    void take(MoDiffPairResult const& result);
    void noteSlow(MoDiffPairResult const& result);
    void showFailures();
    void showFormats();
    void showSlowest();
    void showTotals();
    std::string stateOf(Progress const& progress) const;

    std::ostream& m_out;
    Options m_options;
    MoDiffStatusLine m_line;
    MoDiffConsole m_console;
    std::chrono::steady_clock::time_point m_start;
    std::chrono::steady_clock::time_point m_lastFlush;
    bool m_isStarted = false; ///< whether pairs are compared here, so that the time means something
    std::size_t m_takenUp = 0;
    Counts m_totals;
    std::map<std::string, Counts> m_formats;
    std::map<std::string, std::string> m_failures; ///< by id, ready to be shown
    std::map<std::string, std::string> m_warnings; ///< likewise
    std::vector<Slow> m_slowest;                   ///< slowest first
};

#endif
