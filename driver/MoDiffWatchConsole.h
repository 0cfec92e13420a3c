#ifndef MO_DIFF_WATCH_CONSOLE_H
#define MO_DIFF_WATCH_CONSOLE_H

#include "MoDiffConsole.h"
#include "MoDiffRunEvents.h"
#include "MoDiffStatusLine.h"
#include "MoDiffTotals.h"

#include <cstddef>
#include <iosfwd>
#include <map>
#include <set>
#include <string>
#include <vector>

/// Shows what came of the pairs that were compared again, in a block for each time.
class MoDiffWatchConsole : public MoDiffRunEvents {
public:
    struct Options {
        MoDiffStatusLine::Mode progress;
        bool colours;
        bool isVerbose; ///< shows all that passed
    };

    /// @param out kept; must outlive this object
    MoDiffWatchConsole(std::ostream& out, Options const& options);

    void finished(MoDiffPairResult const& result) override;
    void progressed(Progress const& progress) override;

    /// What has changed beside the pairs that were compared.
    struct Changes {
        std::set<std::string> gone; ///< ids
        std::vector<std::string> newFiles;
        std::vector<std::string> unreadable; ///< sentences
    };
    /// Shows the block and begins another one.
    void show(Changes const& changes, MoDiffTotals const& totals);

private:
    void showPairs();

    std::ostream& m_out;
    Options m_options;
    MoDiffStatusLine m_line;
    MoDiffConsole m_console;
    std::map<std::string, MoDiffPairResult> m_results; ///< by id
};

#endif
