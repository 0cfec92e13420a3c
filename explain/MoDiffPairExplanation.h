#ifndef MO_DIFF_PAIR_EXPLANATION_H
#define MO_DIFF_PAIR_EXPLANATION_H

#include "MoDiffFormatTable.h"
#include "MoDiffHunks.h"
#include "MoDiffLabels.h"
#include "MoDiffSignature.h"

#include <optional>
#include <string>
#include <vector>

/// What differs between the files of a pair, for people. It reads the files as they are now and compares nothing for
/// a verdict: that is the record's.
///
/// Holds both files in memory; while they are compared, what cleansing leaves of them instead. Uses the library's
/// patterns while it is made, so one at a time in a process; not changed afterwards.
class MoDiffPairExplanation {
public:
    enum View {
        eText,    ///< hunks of lines
        eRecords, ///< hunks of records with fields
        eBytes,   ///< bytes that differ, by their offset: a file holds NULs
        eScript   ///< the words of the script that compares the format; no changes, no texts
    };
    struct Options {
        bool raw = false;             ///< compare the files as they are, nothing cleansed
        std::size_t contextLines = 3; ///< unchanged lines around a hunk
    };

    /// Raises std::exception naming the file when one cannot be read, or changes while it is looked at;
    /// KLTAssertError as cleansing does.
    /// @param output the script's words in the record, for formats that scripts compare
    static MoDiffPairExplanation explain(MoDiffFormatRow const& format, MoDiffEngineSettings const& settings,
                                         std::string const& masterName, std::string const& actualName,
                                         std::string const& output, Options const& options);

    View view() const { return m_view; }
    MoDiffBothSides<MoDiffSourceText> const& sources() const { return m_sources; }
    /// Empty when what is compared does not differ (any more), and for scripts.
    std::vector<MoDiffPlacedChange> const& changes() const { return m_changes; }
    std::vector<MoDiffHunk> const& hunks() const { return m_hunks; }
    std::vector<MoDiffLabel> const& labels() const { return m_labels; }
    /// The first thousand kinds of changes; for scripts one, of what the script says but for the files' names.
    std::vector<MoDiffChangeKind> const& kinds() const { return m_kinds; }
    /// The same for pairs that differ in the same way, wherever in their files; 32 hex digits.
    std::string const& signature() const { return m_signature; }
    /// What else is to be known, a sentence each: changes that are shown coarsely, bytes that are not compared.
    std::vector<std::string> const& notes() const { return m_notes; }
    /// The separator of records' fields.
    char separator() const { return m_separator; }
    /// The script's words.
    std::string const& output() const { return m_output; }

private:
    using Texts = MoDiffBothSides<std::string_view>;

    MoDiffPairExplanation() = default;
    std::vector<MoDiffChange> compare(Texts const& texts);
    void show(std::vector<MoDiffChange> changes, std::size_t contextLines);
    void describeBytes();
    void describeKinds(Texts const& texts, std::vector<MoDiffChange> const& changes);
    void describeOutput(std::string const& output, std::string const& masterName, std::string const& actualName);

    View m_view = eText;
    MoDiffBothSides<MoDiffSourceText> m_sources;
    std::vector<MoDiffPlacedChange> m_changes;
    std::vector<MoDiffHunk> m_hunks;
    std::vector<MoDiffLabel> m_labels;
    std::vector<MoDiffChangeKind> m_kinds;
    std::string m_signature;
    std::vector<std::string> m_notes;
    char m_separator = ',';
    std::string m_output;
};

#endif
