#ifndef MO_DIFF_DECISIONS_H
#define MO_DIFF_DECISIONS_H

#include "MoDiffPairResult.h"

#include <map>
#include <string>

/// What somebody decided about pairs and is not carried out yet, or stays: the file decisions.jsonl in the directory
/// of a record. A decision is bound to the contents of both files, so that it outlives a run that finds the same ones
/// again, and no other.
class MoDiffDecisions {
public:
    enum Choice {
        eAccept, ///< the actual file is to become the master
        eReject  ///< the pair is to stay as it is: failing
    };
    struct Decision {
        Choice choice = eAccept;
        std::string remark;
        MoDiffBothSides<std::string> hash; ///< as the record has them
    };

    /// Reads the file when it is there. Raises std::exception naming it.
    explicit MoDiffDecisions(std::string const& directory);

    /// The decision about a pair with these contents; null when there is none.
    Decision const* find(MoDiffPairResult const& pair) const;
    void set(MoDiffPairResult const& pair, Choice choice, std::string const& remark);
    /// @return whether there was a decision
    bool remove(std::string const& id) { return m_decisions.erase(id) > 0; }

    /// Replaces the file as a whole; takes it away when nothing is decided. Raises std::system_error.
    void save() const;

private:
    std::string m_file;
    std::map<std::string, Decision> m_decisions; ///< by id
};

#endif
