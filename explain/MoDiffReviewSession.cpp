#include "MoDiffReviewSession.h"

#include "MoDiffShownText.h"
#include "MoDiffVerifiedAcceptance.h"

#include <algorithm>

namespace {

using Session = MoDiffReviewSession;

std::string folderOf(MoDiffPairResult const& pair) {
    return pair.master.substr(0, pair.master.rfind('/') + 1);
}

Session::State stateOf(MoDiffDecisions::Decision const* decision) {
    if (!decision)
        return Session::eOpen;
    return decision->choice == MoDiffDecisions::eReject ? Session::eRejected : Session::eAccepted;
}

bool canBe(Session::State state, MoDiffPairResult const& pair) {
    return state != Session::eAccepted ||
           MoDiffVerifiedAcceptance::whyNot(MoDiffAcceptanceJournal::eReplace, pair).empty();
}

} // namespace

MoDiffReviewSession::MoDiffReviewSession(MoDiffRecordPairs const& record,
                                         std::vector<MoDiffGroups::Group> const& groups, MoDiffDecisions& decisions)
    : m_decisions(decisions) {
    for (std::size_t group = 0; group < groups.size(); ++group) {
        for (std::string const& id : groups[group].pairs) {
            MoDiffPairResult const* const pair = record.find(id);
            if (!pair || MoDiffRecordPairs::isDealtWith(*pair))
                continue;
            MoDiffDecisions::Decision const* const decision = decisions.find(*pair);
            m_items.push_back({pair, group, stateOf(decision), decision ? decision->remark : ""});
        }
    }
    m_position = firstOpen();
}

MoDiffReviewSession::Counts MoDiffReviewSession::counts() const {
    Counts counts;
    for (Item const& item : m_items)
        ++(item.state == eOpen ? counts.open : item.state == eAccepted ? counts.accepted : counts.rejected);
    return counts;
}

std::size_t MoDiffReviewSession::countMeant(Scope scope) const {
    auto const isOneOf = [this, scope](Item const& item) { return isMeant(item, scope); };
    return isAtEnd() ? 0 : static_cast<std::size_t>(std::count_if(m_items.begin(), m_items.end(), isOneOf));
}

std::vector<MoDiffPairResult const*> MoDiffReviewSession::accepted() const {
    std::vector<MoDiffPairResult const*> pairs;
    for (Item const& item : m_items)
        if (item.state == eAccepted)
            pairs.push_back(item.pair);
    return pairs;
}

std::size_t MoDiffReviewSession::accept(Scope scope) {
    return decide(scope, eAccepted, "");
}

std::size_t MoDiffReviewSession::reject(Scope scope, std::string const& remark) {
    return decide(scope, eRejected, remark);
}

std::size_t MoDiffReviewSession::decide(Scope scope, State state, std::string const& remark) {
    if (isAtEnd())
        return 0;
    Step step{m_position, {}};
    for (std::size_t index = 0; index < m_items.size(); ++index) {
        Item& item = m_items[index];
        if (!isMeant(item, scope) || !canBe(state, *item.pair))
            continue;
        step.changes.push_back({index, item.state, item.remark});
        set(item, state, remark);
    }
    std::size_t const count = step.changes.size();
    if (count == 0)
        return 0;
    m_steps.push_back(std::move(step));
    goToOpen(ePair);
    return count;
}

bool MoDiffReviewSession::isMeant(Item const& item, Scope scope) const {
    return &item == &m_items[m_position] || (item.state == eOpen && isInScope(item, scope));
}

bool MoDiffReviewSession::isInScope(Item const& item, Scope scope) const {
    Item const& current = m_items[m_position];
    return scope == eGroup    ? item.group == current.group
           : scope == eFolder ? folderOf(*item.pair) == folderOf(*current.pair)
                              : &item == &current;
}

void MoDiffReviewSession::set(Item& item, State state, std::string const& remark) {
    item.state = state;
    item.remark = remark;
    if (state == eOpen)
        m_decisions.remove(item.pair->id);
    else
        m_decisions.set(*item.pair, state == eAccepted ? MoDiffDecisions::eAccept : MoDiffDecisions::eReject, remark);
}

void MoDiffReviewSession::skip(Scope scope) {
    if (!isAtEnd())
        goToOpen(scope);
}

/// Goes to the next open item that is not of the current one's scope; to the end without any.
void MoDiffReviewSession::goToOpen(Scope behind) {
    std::size_t next = m_position + 1;
    while (next < m_items.size() && (m_items[next].state != eOpen || isInScope(m_items[next], behind)))
        ++next;
    m_position = next;
}

bool MoDiffReviewSession::undo() {
    if (m_steps.empty())
        return false;
    Step const step = std::move(m_steps.back());
    m_steps.pop_back();
    for (Change const& change : step.changes)
        set(m_items[change.item], change.state, change.remark);
    m_position = step.position;
    return true;
}

void MoDiffReviewSession::goForward() {
    m_position = std::min(m_position + 1, m_items.size());
}

void MoDiffReviewSession::goBack() {
    m_position -= m_position > 0 ? 1 : 0;
}

void MoDiffReviewSession::goToFirstOpen() {
    m_position = firstOpen();
    if (isAtEnd())
        goBack();
}

std::size_t MoDiffReviewSession::firstOpen() const {
    auto const isOpen = [](Item const& item) { return item.state == eOpen; };
    return static_cast<std::size_t>(std::find_if(m_items.begin(), m_items.end(), isOpen) - m_items.begin());
}

bool MoDiffReviewSession::search(std::string const& text) {
    for (std::size_t step = 1; step <= m_items.size(); ++step) {
        std::size_t const index = (m_position + step) % m_items.size();
        std::string const& id = m_items[index].pair->id;
        if (id.find(text) == std::string::npos && MoDiffShownText::escaped(id).find(text) == std::string::npos)
            continue;
        m_position = index;
        return true;
    }
    return false;
}
