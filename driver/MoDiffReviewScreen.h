#ifndef MO_DIFF_REVIEW_SCREEN_H
#define MO_DIFF_REVIEW_SCREEN_H

#include "MoDiffReviewSession.h"
#include "MoDiffStyledLine.h"
#include "MoDiffTerminal.h"

#include <functional>
#include <string>
#include <vector>

/// Shows a review on a terminal and reads its keys.
class MoDiffReviewScreen {
public:
    /// What came of a review.
    enum End { eCarryOut, eKeep, eInterrupted };
    /// Gives the lines that show a pair.
    using Explain = std::function<std::vector<MoDiffStyledLine>(MoDiffPairResult const&)>;
    /// Is called after each key that decided something.
    using Save = std::function<void()>;

    /// All must outlive this object.
    MoDiffReviewScreen(MoDiffReviewSession& session, std::vector<MoDiffGroups::Group> const& groups, Explain explain,
                       Save save);

    End run();

private:
    using Scope = MoDiffReviewSession::Scope;

    bool handle(std::string const& key);
    bool move(std::string const& key);
    bool decide(std::string const& key, Scope scope);
    void decideWider(Scope scope);
    void search();
    bool confirmEnd(End& end);
    std::string ask(std::string const& question, bool& isCancelled);
    std::string keyFor(std::string const& question);

    void draw(std::string const& footer);
    void loadLines(std::size_t columns);
    std::vector<MoDiffStyledLine> head(std::size_t columns) const;
    std::string keysLine() const;

    MoDiffReviewSession& m_session;
    std::vector<MoDiffGroups::Group> const& m_groups;
    Explain m_explain;
    Save m_save;
    MoDiffTerminal m_terminal;
    std::string m_message;                 ///< what the last key did
    std::string m_sought;                  ///< what was searched for last
    std::size_t m_first = 0;               ///< the line of the diff at the top
    std::size_t m_room = 1;                ///< lines for the diff
    std::size_t m_shown = ~std::size_t{0}; ///< the item whose lines are held
    std::size_t m_columns = 0;             ///< for which they are wrapped
    std::vector<MoDiffStyledLine> m_lines;
    bool m_isInterrupted = false;
};

#endif
