#ifndef MO_DIFF_RECORD_H
#define MO_DIFF_RECORD_H

#include "MoDiffPairResult.h"
#include "MoDiffTotals.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// A record that cannot be used; the text names its file and, where it helps, the line.
class MoDiffRecordError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The first line of a record: what was to be compared.
struct MoDiffRecordHeader {
    std::string version;                 ///< of the program that wrote it
    std::string config = "{}";           ///< a JSON object: the values of the configuration
    std::string selection = "{}";        ///< a JSON object: the filters and whatever else chose the pairs
    std::string digest;                  ///< of the plan, see MoDiffPlan
    std::string chosenDigest;            ///< of the ids of all shards together, likewise
    std::vector<std::string> unreadable; ///< directories in which masters may lie, sentences with the reason
    std::size_t pairs = 0;               ///< what this record holds when it is complete
    unsigned shardIndex = 1;
    unsigned shardCount = 1;
    bool newFails = false; ///< whether a run with new files is to fail
};

/// The last line of a record.
struct MoDiffRecordEnd {
    bool complete = false;
    std::string stopped; ///< why it is not complete: "SIGINT", "fail-fast"; "" otherwise
    MoDiffTotals totals;
    double seconds = 0;
};

/// The lines of a record, each a JSON object with a line feed behind it.
namespace MoDiffRecord {

unsigned constexpr kSchema = 1;
extern char const kFileName[]; ///< of the record in the directory of a run: "run.jsonl"

std::string headerLine(MoDiffRecordHeader const& header);
std::string pairLine(MoDiffPairResult const& result);
std::string newFilesLine(std::vector<std::string> const& files);
std::string endLine(MoDiffRecordEnd const& end);

/// What a line is.
enum LineKind { eHeader, ePair, eNewFiles, eEnd };

/// A line that was read: the member for its kind is filled.
struct Line {
    LineKind kind = ePair;
    MoDiffRecordHeader header;
    MoDiffPairResult pair;
    std::vector<std::string> newFiles;
    MoDiffRecordEnd end;
};

/// Reads a line, with or without its line feed. Raises std::exception with the reason when it is none of a record.
Line parse(std::string_view line);

} // namespace MoDiffRecord

#endif
