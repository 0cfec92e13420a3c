#include "MoDiffReviewSession.h"

#include "../MoTestTree.h"
#include "MoDiffRecord.h"

#include <cstring>
#include <gtest/gtest.h>
#include <memory>

namespace {

using Scope = MoDiffReviewSession::Scope;

/// Pairs a, b and c are alike, d has no actual file, e is alone; c and e are in another folder than the others.
class ReviewSessionTest : public testing::Test {
protected:
    void SetUp() override {
        for (char const* const id : {"x/Masters/a", "x/Masters/b", "y/Masters/c", "x/Masters/d", "y/Masters/e"}) {
            MoDiffPairResult pair;
            pair.id = id;
            pair.master = id;
            pair.outcome = id[10] == 'd' ? MoDiffOutcome::eMissing : MoDiffOutcome::eDifferent;
            pair.hash = {"1", pair.outcome == MoDiffOutcome::eMissing ? "" : "2"};
            MoTestTree::write(pair.master, "1");
            m_pairs.push_back(pair);
        }
        open();
    }

    /// Begins a review of the record with the decisions that are kept.
    void open() {
        m_session.reset();
        std::string record = MoDiffRecord::headerLine({});
        for (MoDiffPairResult const& pair : m_pairs)
            record += MoDiffRecord::pairLine(pair);
        MoTestTree::write("out/run.jsonl", record);
        m_record = std::make_unique<MoDiffRecordPairs>("out");
        m_decisions = std::make_unique<MoDiffDecisions>("out");
        m_session = std::make_unique<MoDiffReviewSession>(*m_record, m_groups, *m_decisions);
    }

    /// a, r and s decide on a pair or skip it, A, R and S its group, F, X and T its folder.
    void press(char key) {
        MoDiffReviewSession& session = *m_session;
        auto const scopeIn = [key](std::string const& keys) { return Scope(keys.find(key)); };
        if (std::strchr("aAF", key))
            session.accept(scopeIn("aAF"));
        else if (std::strchr("rRX", key))
            session.reject(scopeIn("rRX"), "why");
        else if (std::strchr("sST", key))
            session.skip(scopeIn("sST"));
        else if (key == 'u')
            m_isUndone = session.undo();
        else if (key == 'n')
            session.goForward();
        else if (key == 'p')
            session.goBack();
        else if (key == 'h')
            session.goToFirstOpen();
        else
            session.search(std::string("Masters/") + key);
    }

    /// A letter for each pair's state, a dash for a pair that is left out.
    std::string states() const {
        std::string letters = "-----";
        for (MoDiffReviewSession::Item const& item : m_session->items()) {
            EXPECT_EQ(item.remark, item.state == MoDiffReviewSession::eRejected ? "why" : "");
            letters[static_cast<std::size_t>(item.pair->id.back() - 'a')] = ".AR"[item.state];
        }
        return letters;
    }

    MoTestTree m_tree;
    std::vector<MoDiffPairResult> m_pairs;
    std::vector<MoDiffGroups::Group> const m_groups = {{"", {}, {"x/Masters/a", "x/Masters/b", "y/Masters/c"}},
                                                       {"", {}, {"x/Masters/d"}},
                                                       {"", {}, {"y/Masters/e"}}};
    std::unique_ptr<MoDiffRecordPairs> m_record;
    std::unique_ptr<MoDiffDecisions> m_decisions;
    std::unique_ptr<MoDiffReviewSession> m_session;
    bool m_isUndone = false;
};

} // namespace

TEST_F(ReviewSessionTest, KeysDecideMoveAndTakeBack) {
    struct {
        char const* keys;
        char const* states;
        std::size_t position;
    } const rows[] = {
        {"", ".....", 0},      {"a", "A....", 1},      {"nna", "..A..", 3}, // what is open before stays so
        {"A", "AAA..", 3},                                                  // the group, not what follows it
        {"nR", "RRR..", 3},                                                 // from its middle, too
        {"aR", "ARR..", 3},                                                 // what is decided stays
        {"apr", "R....", 1},                                                // unless it is looked at
        {"F", "AA...", 2},                                                  // d cannot be accepted
        {"X", "RR.R.", 2},                                                  // but rejected
        {"nnna", ".....", 3},                                               // nothing is decided, nobody moves
        {"s", ".....", 1},     {"S", ".....", 3},      {"T", ".....", 2},
        {"nas", ".A...", 3},   {"AraS", "AAARA", 5}, // the end, where nothing can be decided
        {"Araar", "AAARA", 5}, {"Arannu", "AAAR.", 4}, {"Ssr", "....R", 5},
        {"Ssrh", "....R", 0},  {"Arah", "AAARA", 4},   {"pap", "A....", 0},
        {"Au", ".....", 0},    {"aRu", "A....", 1},                           // the last decision alone
        {"apru", "A....", 0},  {"apruu", ".....", 0},  {"annau", ".....", 0}, // of those that decided something
        {"e", ".....", 4},     {"eb", ".....", 1},                            // on from the beginning
        {"z", ".....", 0},
    };
    for (auto const& row : rows) {
        for (char const* key = row.keys; *key; ++key)
            press(*key);
        EXPECT_EQ(states(), row.states) << row.keys;
        EXPECT_EQ(m_session->position(), row.position) << row.keys;
        std::size_t const told = m_session->countMeant(MoDiffReviewSession::eGroup);
        EXPECT_EQ(m_session->reject(MoDiffReviewSession::eGroup, "why"), told) << row.keys;
        if (told > 0)
            press('u');
        m_decisions->save();
        open();
        EXPECT_EQ(states(), row.states) << row.keys << ", taken up";
        m_isUndone = true;
        press('u');
        EXPECT_FALSE(m_isUndone) << "decisions of another time";
        std::filesystem::remove("out/decisions.jsonl");
        open();
    }
}

TEST_F(ReviewSessionTest, DecisionsHoldAsLongAsBothFilesAreTheSame) {
    press('A');
    press('r');
    m_decisions->save();
    m_pairs[0].hash.master = m_pairs[1].hash.actual = "3";
    open();
    EXPECT_EQ(states(), "..AR.");
    EXPECT_EQ(m_session->accepted().size(), 1U);
    EXPECT_EQ(m_session->counts().open, 3U);
    std::filesystem::remove(m_pairs[3].master); // what was decided is done
    open();
    EXPECT_EQ(states(), "..A-.");
}
