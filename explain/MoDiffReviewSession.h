#ifndef MO_DIFF_REVIEW_SESSION_H
#define MO_DIFF_REVIEW_SESSION_H

#include "MoDiffDecisions.h"
#include "MoDiffGroups.h"
#include "MoDiffRecordPairs.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// Somebody goes through the pairs that failed, group by group, and decides on each. Knows no terminal. What is
/// decided is kept in MoDiffDecisions; nothing is done to masters here.
class MoDiffReviewSession {
public:
    enum State { eOpen, eAccepted, eRejected };
    enum Scope { ePair, eGroup, eFolder };
    struct Item {
        MoDiffPairResult const* pair;
        std::size_t group; ///< its index among the groups
        State state;
        std::string remark;
    };
    struct Counts {
        std::size_t open = 0;
        std::size_t accepted = 0;
        std::size_t rejected = 0;
    };

    /// Takes up what was decided before; pairs whose decision is carried out are left out.
    /// @param record must outlive this object, like decisions, which are kept up to date but not saved
    MoDiffReviewSession(MoDiffRecordPairs const& record, std::vector<MoDiffGroups::Group> const& groups,
                        MoDiffDecisions& decisions);

    std::vector<Item> const& items() const { return m_items; }
    /// The item that is looked at; its index is items().size() at the end.
    std::size_t position() const { return m_position; }
    bool isAtEnd() const { return m_position == m_items.size(); }
    Counts counts() const;
    /// How many pairs a decision for a scope would meet: the one that is looked at, and what is open besides.
    std::size_t countMeant(Scope scope) const;
    /// The pairs to accept.
    std::vector<MoDiffPairResult const*> accepted() const;

    /// Decides on the pair that is looked at, or on all open ones of its group or of the folder of its master
    /// besides, and goes on to the next open pair. Pairs that cannot be accepted stay open.
    /// @return how many were decided
    std::size_t accept(Scope scope);
    std::size_t reject(Scope scope, std::string const& remark);
    /// Goes on to the next open pair behind those of the scope, deciding nothing.
    void skip(Scope scope);
    /// Takes the last decision back and goes to where it was made; false when there is none.
    bool undo();

    void goForward();
    void goBack();
    /// Goes to the first open pair; to the last one when none is open.
    void goToFirstOpen();
    /// Goes to the next pair whose id holds a text, from the beginning on after the last one; false without any.
    bool search(std::string const& text);

private:
    struct Change {
        std::size_t item;
        State state;
        std::string remark;
    };
    struct Step {
        std::size_t position;
        std::vector<Change> changes; ///< as it was before
    };

    std::size_t decide(Scope scope, State state, std::string const& remark);
    bool isMeant(Item const& item, Scope scope) const;
    bool isInScope(Item const& item, Scope scope) const;
    void set(Item& item, State state, std::string const& remark);
    void goToOpen(Scope behind);
    std::size_t firstOpen() const;

    MoDiffDecisions& m_decisions;
    std::vector<Item> m_items;
    std::size_t m_position = 0;
    std::vector<Step> m_steps;
};

#endif
