#ifndef MO_DIFF_ACCEPTANCE_JOURNAL_H
#define MO_DIFF_ACCEPTANCE_JOURNAL_H

#include <string>
#include <vector>

/// What an acceptance is about to do, on disk before it does it, and the list of what was accepted. Both lie in the
/// directory of a record: accept.journal, which is there only while an acceptance works or when one was interrupted,
/// and accepted.jsonl. Errors raise std::exception.
class MoDiffAcceptanceJournal {
public:
    enum Action {
        eReplace, ///< the actual file takes the master's place
        eCreate,  ///< the actual file becomes a master where there was none
        eRetire   ///< the master goes
    };
    struct Step {
        Action action = eReplace;
        std::string pair;
        std::string master; ///< absolute, without links
        std::string actual; ///< absolute
        std::string oldSum; ///< SHA-256 of the master before; "" for none
        std::string newSum; ///< SHA-256 of the master after; "" for none
        std::string time;   ///< of the decision, as in RFC 3339
        std::string user;
        std::string remark;
    };

    explicit MoDiffAcceptanceJournal(std::string const& directory);

    /// The steps of an acceptance that was interrupted; none without one.
    std::vector<Step> read() const;
    /// Puts the steps on disk.
    void write(std::vector<Step> const& steps) const;
    /// All steps are dealt with.
    void remove() const;

    /// Adds a step to the list of what was accepted; on disk when this returns.
    /// @param mayBeThere whether an interrupted acceptance may have added it
    void addAccepted(Step const& step, bool mayBeThere) const;

private:
    std::string m_journal;
    std::string m_accepted;
};

#endif
