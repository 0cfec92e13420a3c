#ifndef MO_DIFF_RECORD_PAIRS_H
#define MO_DIFF_RECORD_PAIRS_H

#include "MoDiffRecord.h"

#include <functional>
#include <string>
#include <vector>

/// All pairs of a record in memory, for decisions about them.
class MoDiffRecordPairs {
public:
    using Pairs = std::vector<MoDiffPairResult>;
    /// Whether a pair can be meant when a glob or a part of its id meets it.
    using Filter = std::function<bool(MoDiffPairResult const&)>;

    /// Raises MoDiffRecordError.
    /// @param directory of a run
    explicit MoDiffRecordPairs(std::string const& directory);

    std::string const& directory() const { return m_directory; }
    /// In the byte order of their ids.
    Pairs const& pairs() const { return m_pairs; }
    /// Null when there is none of this id.
    MoDiffPairResult const* find(std::string const& id) const;
    /// Actual files without master.
    std::vector<std::string> const& newFiles() const { return m_newFiles; }
    /// Whether these made the run fail; those of a shard are left to the merge.
    bool newFilesFail() const { return m_newFilesFail; }
    /// A sentence that says what an incomplete record lacks; "" for a complete one.
    std::string const& incomplete() const { return m_incomplete; }
    /// The first and the last line of the record; the last one is empty when the run was killed.
    MoDiffRecordHeader const& header() const { return m_header; }
    MoDiffRecordEnd const& end() const { return m_end; }
    /// The working directory of the run, which its paths are seen from; "" when the record does not tell it.
    std::string const& workingDirectory() const { return m_workingDirectory; }
    /// XXH3 of the record's bytes, for what is kept beside the record and belongs to it alone.
    std::string const& hash() const { return m_hash; }

    /// The pairs that are named, each once, in the byte order of their ids. A name is an id, as it is or as it is
    /// shown, which means just this pair; or a glob or a part of ids, which means those pairs that the filter takes.
    /// Raises MoDiffSelectionError for a name that means no pair.
    std::vector<MoDiffPairResult const*> choose(std::vector<std::string> const& names, Filter const& filter) const;

    /// Whether the decision about a pair is carried out: its master has become what its actual file was, or is gone
    /// like its actual file. Reads the master when its length is the actual file's.
    static bool isDealtWith(MoDiffPairResult const& pair);

    /// Whether both files are what they were when they were compared. Reads them.
    static bool isUnchanged(MoDiffPairResult const& pair);

private:
    std::string m_directory;
    Pairs m_pairs;
    std::vector<std::string> m_newFiles;
    bool m_newFilesFail = false;
    std::string m_incomplete;
    MoDiffRecordHeader m_header;
    MoDiffRecordEnd m_end;
    std::string m_workingDirectory;
    std::string m_hash;
};

#endif
