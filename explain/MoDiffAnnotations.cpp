#include "MoDiffAnnotations.h"

#include "MoDiffRecordGroups.h"
#include "MoDiffShownText.h"

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <sstream>
#include <vector>

namespace fs = std::filesystem;

using MoDiffShownText::escaped;

namespace {

std::size_t const kMostOutputLines = 10;

/// A text as a workflow command takes it, whose end is the end of the line.
/// @param special further characters that end it
std::string encoded(std::string const& text, std::string const& special) {
    static char const digits[] = "0123456789ABCDEF";
    std::string result;
    for (char const byte : text) {
        if (("%\r\n" + special).find(byte) == std::string::npos) {
            result += byte;
            continue;
        }
        result += {'%', digits[static_cast<unsigned char>(byte) >> 4], digits[static_cast<unsigned char>(byte) & 15]};
    }
    return result;
}

std::string property(char const* name, std::string const& value) {
    return std::string(name) + "=" + encoded(value, ":,");
}

/// What is written about one failure.
struct Error {
    std::string title;
    std::string message; ///< may have lines
    std::string file;    ///< seen from the workspace; "" when it has no place there
    std::size_t line = 0;
};

/// What no verdict was reached of comes first.
bool isWithoutVerdict(MoDiffPairResult const& pair) {
    return pair.outcome != MoDiffOutcome::eDifferent && pair.outcome != MoDiffOutcome::eMissing &&
           pair.outcome != MoDiffOutcome::eUnexpectedlyPassed;
}

/// The path from the workspace, which is how GitHub knows files; "" when it leads out or could not be shown.
std::string seenFrom(std::string const& workspace, std::string const& path) {
    std::error_code error;
    fs::path const top = fs::canonical(workspace, error);
    fs::path const here = error ? fs::path() : fs::canonical(fs::current_path(error), error);
    if (error)
        return "";
    std::string const relative = (here / path).lexically_normal().lexically_relative(top).string();
    bool const isInside = !relative.empty() && relative.rfind("..", 0) != 0;
    return isInside && escaped(relative) == relative ? relative : "";
}

/// Adds what differs, and where. Whatever keeps it from being found keeps nothing else from being told.
void describeDifference(MoDiffPairResult const& pair, MoDiffPairSetups& setups, Error& error) {
    try {
        MoDiffPairExplanation const explanation = MoDiffRecordGroups::explain(pair, setups, {});
        if (!explanation.changes().empty())
            error.line = explanation.changes().front().place.master.line;
        auto const& kinds = explanation.kinds();
        if (!kinds.empty())
            error.message += "\n" + kinds.front().title;
        if (kinds.size() > 1)
            error.message += " and " + std::to_string(kinds.size() - 1) + " more";
    } catch (std::exception const& reason) {
        error.message += "\ncannot show what differs: " + escaped(reason.what());
    }
}

void addOutput(std::string const& output, Error& error) {
    std::istringstream lines(output);
    std::string line;
    for (std::size_t count = 0; count < kMostOutputLines && std::getline(lines, line); ++count)
        error.message += "\n" + MoDiffShownText::printable(line);
}

Error errorOf(MoDiffPairResult const& pair, MoDiffPairSetups& setups, std::string const& workspace) {
    std::string const word = wordOf(pair.outcome);
    Error error{word + ": " + escaped(pair.id), MoDiffShownText::printable(pair.detail.empty() ? word : pair.detail),
                workspace.empty() ? "" : seenFrom(workspace, pair.master)};
    if (!MoDiffRecordGroups::isExplained(pair))
        addOutput(pair.output, error);
    else if (MoDiffRecordPairs::isUnchanged(pair))
        describeDifference(pair, setups, error);
    else
        error.message += "\nwhat differs is not shown: the files changed since the run";
    return error;
}

void write(Error const& error, std::ostream& out) {
    out << "::error " << property("title", error.title);
    if (!error.file.empty())
        out << "," << property("file", error.file);
    if (!error.file.empty() && error.line > 0)
        out << "," << property("line", std::to_string(error.line));
    out << "::" << encoded(error.message, "") << '\n';
}

} // namespace

void MoDiffAnnotations::writeForGitHub(MoDiffRecordPairs const& record, MoDiffPairSetups& setups,
                                       std::string const& workspace, std::ostream& out) {
    std::vector<MoDiffPairResult const*> failed;
    for (MoDiffPairResult const& pair : record.pairs())
        if (isFailure(pair.outcome))
            failed.push_back(&pair);
    std::stable_partition(failed.begin(), failed.end(), [](auto const* pair) { return isWithoutVerdict(*pair); });

    std::size_t room = kMostErrors;
    if (!record.incomplete().empty()) {
        write({"modiff", escaped(record.incomplete()), ""}, out);
        --room;
    }
    std::size_t const pairs = std::min(room, failed.size());
    for (std::size_t index = 0; index < pairs; ++index)
        write(errorOf(*failed[index], setups, workspace), out);
    std::vector<std::string> const newFiles = record.newFilesFail() ? record.newFiles() : std::vector<std::string>();
    std::size_t const files = std::min(room - pairs, newFiles.size());
    for (std::size_t index = 0; index < files; ++index)
        write({"new: " + escaped(newFiles[index]), "no master", ""}, out);
    if (std::size_t const more = failed.size() + newFiles.size() - pairs - files)
        out << "::notice title=modiff::" << more << " more did not pass; the record tells them all\n";
}
