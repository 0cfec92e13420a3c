#include "MoDiffJunit.h"

#include "MoDiffDiffText.h"
#include "MoDiffMarkupText.h"
#include "MoDiffRecordGroups.h"
#include "MoDiffShownText.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>
#include <ostream>
#include <utility>

namespace {

using MoDiffMarkupText::escaped;

char const kClipped[] = "[clipped; `modiff show` tells the rest]\n";
char const kOwnSuite[] = "modiff";     // of what is told of the run itself
char const kNewSuite[] = "new";        // of actual files without master
std::size_t const kMostMessage = 500;  // an attribute; the text repeats it in full
std::size_t const kMostHunks = 50;     // more are clipped anyway
std::size_t const kMarkup = 32;        // at least, the element around a case, that around its warnings
std::size_t const kVerdictMarkup = 64; // at least, the element of its verdict
std::size_t const kFrame = 16'384;     // at most, the elements around all cases, of some thirty suites
std::size_t const kLeastCases = 4;     // cases alone may fill all but this part of the whole
std::size_t const kLeastText = 2;      // warnings may fill this part of a case's text

enum Verdict { ePassed, eSkipped, eFailure, eError };
std::size_t const kVerdicts = 4;
char const* const kElements[kVerdicts] = {"", "skipped", "failure", "error"};

Verdict verdictOf(MoDiffOutcome outcome) {
    switch (outcome) {
    case MoDiffOutcome::ePassed:
        return ePassed;
    case MoDiffOutcome::eExpected:
        return eSkipped;
    case MoDiffOutcome::eDifferent:
    case MoDiffOutcome::eMissing:
    case MoDiffOutcome::eUnexpectedlyPassed:
        return eFailure;
    default:
        return eError;
    }
}

std::string attribute(char const* name, std::string_view markup) {
    return std::string(" ").append(name).append("=\"").append(markup).append("\"");
}

std::string secondsWords(double seconds) {
    std::array<char, 40> words{};
    std::snprintf(words.data(), words.size(), "%.3f", seconds);
    return words.data();
}

/// A test case without its texts.
struct Case {
    Case(std::string suiteName, std::string const& name, std::string const& className, Verdict itsVerdict,
         std::string const& itsType, std::string const& itsMessage)
        : suite(std::move(suiteName)), verdict(itsVerdict), type(itsType) {
        attributes = attribute("name", escaped(name)) + attribute("classname", escaped(className));
        message = MoDiffMarkupText::fit(escaped(itsMessage), kMostMessage);
    }

    std::size_t size() const {
        std::size_t const inner = verdict == ePassed ? 0 : message.size() + type.size() + kVerdictMarkup;
        return attributes.size() + kMarkup + inner + (hasText() ? kMarkup : 0);
    }
    bool hasText() const { return pair && (verdict > eSkipped || !pair->warnings.empty()); }

    std::string suite;
    std::string attributes;
    Verdict verdict;
    std::string type;
    std::string message;
    double seconds = 0;
    MoDiffPairResult const* pair = nullptr; ///< null for what is told of the run
};

/// Jenkins makes a tree of class names by their dots: the format and the folder's steps.
std::string classNameOf(MoDiffPairResult const& pair, std::string const& path) {
    std::string folder = path.substr(0, std::min(path.rfind('/'), path.size()));
    std::replace(folder.begin(), folder.end(), '/', '.');
    return folder == path ? pair.format : pair.format + "." + folder;
}

Case caseOf(MoDiffPairResult const& pair) {
    std::string const path = pair.id.substr(pair.id.find(':') + 1);
    Case made(pair.format, pair.id, classNameOf(pair, path), verdictOf(pair.outcome), wordOf(pair.outcome),
              pair.detail.empty() ? wordOf(pair.outcome) : pair.detail);
    made.attributes += attribute("file", escaped(path)) + attribute("time", secondsWords(pair.seconds));
    made.seconds = pair.seconds;
    made.pair = &pair;
    return made;
}

/// Lines up to a size.
class ClippedText {
public:
    explicit ClippedText(std::size_t bytes) : m_room(bytes - std::min(bytes, sizeof kClipped - 1)) {
        if (m_room == 0)
            m_end = ""; // not even the word
    }

    /// @param markup without line feed
    void add(std::string_view markup) {
        if (m_isClipped)
            return;
        std::size_t const room = m_room - m_text.size();
        m_isClipped = markup.size() >= room;
        if (room > 0)
            m_text.append(MoDiffMarkupText::fit(markup, room - 1)).append("\n");
    }
    std::string text() const { return m_isClipped ? m_text + m_end : m_text; }

private:
    std::size_t m_room;
    std::string m_text;
    char const* m_end = kClipped;
    bool m_isClipped = false;
};

void addLines(std::string_view bytes, ClippedText& text) {
    for (std::size_t at = 0; at < bytes.size();) {
        std::size_t const end = MoDiffLines::end(bytes, at);
        std::string_view const line = bytes.substr(at, end - at);
        text.add(escaped(line.substr(0, line.find_last_not_of("\r\n") + 1)));
        at = end;
    }
}

void addDifference(MoDiffPairResult const& pair, MoDiffPairSetups& setups, ClippedText& text) {
    if (!MoDiffRecordPairs::isUnchanged(pair))
        return text.add("what differs is not shown: the files changed since the run");
    MoDiffDiffText::Options look;
    look.brackets = true;
    look.mostHunks = kMostHunks;
    try {
        MoDiffDiffText::write(MoDiffRecordGroups::explain(pair, setups, {}), look, [&](MoDiffStyledLine const& line) {
            std::string shown;
            for (MoDiffSpan const& span : line)
                shown += span.text;
            text.add(MoDiffMarkupText::printable(shown));
        });
    } catch (std::exception const& error) {
        text.add("cannot show what differs: " + escaped(error.what()));
    }
}

std::string textOf(MoDiffPairResult const& pair, MoDiffPairSetups& setups, std::size_t bytes) {
    ClippedText text(bytes);
    text.add(escaped(wordOf(pair.outcome) + (pair.detail.empty() ? "" : ": " + pair.detail)));
    text.add("master  " + escaped(pair.master));
    text.add("actual  " + escaped(pair.actual));
    if (MoDiffRecordGroups::isExplained(pair))
        addDifference(pair, setups, text);
    else
        addLines(pair.output, text);
    if (!pair.resultFile.empty())
        text.add("list    " + escaped(pair.resultFile));
    return text.text();
}

std::string warningsOf(MoDiffPairResult const& pair, std::size_t bytes) {
    ClippedText text(bytes);
    for (std::string const& warning : pair.warnings)
        text.add("warning  " + escaped(warning));
    return text.text();
}

class Writer {
public:
    Writer(MoDiffRecordPairs const& record, MoDiffPairSetups& setups, MoDiffJunit::Limits const& limits,
           std::ostream& out)
        : m_setups(setups), m_limits(limits), m_out(out) {
        gather(record);
        leaveOut();
        shareText();
    }

    void write() {
        m_out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" << attribute("name", "modiff")
              << countsOf(m_cases.begin(), m_cases.end()) << ">\n";
        for (auto begin = m_cases.begin(); begin != m_cases.end();) {
            auto const end =
                std::find_if(begin, m_cases.end(), [begin](Case const& one) { return one.suite != begin->suite; });
            m_out << "<testsuite" << attribute("name", escaped(begin->suite)) << countsOf(begin, end) << ">\n";
            for (; begin != end; ++begin)
                writeCase(*begin);
            m_out << "</testsuite>\n";
        }
        m_out << "</testsuites>\n";
    }

private:
    using Cases = std::vector<Case>;

    void gather(MoDiffRecordPairs const& record) {
        if (!record.incomplete().empty())
            m_cases.emplace_back(kOwnSuite, "the record is complete", kOwnSuite, eError, "incomplete",
                                 record.incomplete());
        for (MoDiffPairResult const& pair : record.pairs())
            m_cases.push_back(caseOf(pair));
        if (record.newFilesFail())
            for (std::string const& file : record.newFiles())
                m_cases.emplace_back(kNewSuite, "new:" + file, kNewSuite, eFailure, "new", "no master");
    }

    std::size_t sizeOfCases() const {
        return std::accumulate(m_cases.begin(), m_cases.end(), kFrame,
                               [](std::size_t sum, Case const& one) { return sum + one.size(); });
    }

    /// Keeps what matters most when there are more cases than a server takes.
    void leaveOut() {
        std::size_t const most = m_limits.mostBytes - m_limits.mostBytes / kLeastCases;
        if (sizeOfCases() <= most)
            return;
        Cases kept;
        std::vector<bool> const isKept = chooseCases(most);
        bool areFailuresLeft = false;
        for (std::size_t index = 0; index < m_cases.size(); ++index) {
            if (isKept[index])
                kept.push_back(std::move(m_cases[index]));
            else
                areFailuresLeft = areFailuresLeft || m_cases[index].verdict > eSkipped;
        }
        std::string const words = std::to_string(m_cases.size() - kept.size()) + " of " +
                                  std::to_string(m_cases.size()) +
                                  " cases are left out, with which this file would be too large for servers";
        kept.emplace(kept.begin(), kOwnSuite, "all cases are here", kOwnSuite, areFailuresLeft ? eError : eSkipped,
                     "clipped", words);
        m_cases = std::move(kept);
    }

    /// By index, the worst verdicts first.
    std::vector<bool> chooseCases(std::size_t most) const {
        std::vector<bool> isKept(m_cases.size());
        std::size_t size = kFrame + kMostMessage;
        for (Verdict const verdict : {eError, eFailure, eSkipped, ePassed})
            for (std::size_t index = 0; index < m_cases.size(); ++index)
                if (m_cases[index].verdict == verdict && size + m_cases[index].size() <= most) {
                    isKept[index] = true;
                    size += m_cases[index].size();
                }
        return isKept;
    }

    /// All texts get the same room, so that no failure is silent because of another one.
    void shareText() {
        auto const count = static_cast<std::size_t>(
            std::count_if(m_cases.begin(), m_cases.end(), [](Case const& one) { return one.hasText(); }));
        std::size_t const used = std::min(sizeOfCases(), m_limits.mostBytes);
        m_mostText = std::min(m_limits.mostText, (m_limits.mostBytes - used) / std::max<std::size_t>(count, 1));
    }

    static std::string countsOf(Cases::const_iterator begin, Cases::const_iterator end) {
        std::array<std::size_t, kVerdicts> counts{};
        double seconds = 0;
        for (auto one = begin; one != end; ++one) {
            ++counts[one->verdict];
            seconds += one->seconds;
        }
        return attribute("tests", std::to_string(end - begin)) +
               attribute("failures", std::to_string(counts[eFailure])) +
               attribute("errors", std::to_string(counts[eError])) +
               attribute("skipped", std::to_string(counts[eSkipped])) + attribute("time", secondsWords(seconds));
    }

    void writeCase(Case const& one) {
        std::string const warnings = one.hasText() ? warningsOf(*one.pair, m_mostText / kLeastText) : "";
        m_out << "<testcase" << one.attributes << ">";
        if (one.verdict == eSkipped)
            m_out << "<skipped" << attribute("message", one.message) << "/>";
        else if (one.verdict != ePassed)
            m_out << "<" << kElements[one.verdict] << attribute("type", one.type) << attribute("message", one.message)
                  << ">" << (one.pair ? textOf(*one.pair, m_setups, m_mostText - warnings.size()) : one.message)
                  << "</" << kElements[one.verdict] << ">";
        if (!warnings.empty())
            m_out << "<system-out>" << warnings << "</system-out>";
        m_out << "</testcase>\n";
    }

    MoDiffPairSetups& m_setups;
    MoDiffJunit::Limits const& m_limits;
    std::ostream& m_out;
    Cases m_cases; ///< those of a suite together
    std::size_t m_mostText = 0;
};

} // namespace

void MoDiffJunit::write(MoDiffRecordPairs const& record, MoDiffPairSetups& setups, Limits const& limits,
                        std::ostream& out) {
    Writer(record, setups, limits, out).write();
}
