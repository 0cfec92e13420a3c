#include "MoDiffPairExplanation.h"

#include "MoDiffCleansedText.h"
#include "MoDiffCsvSplitter.h"
#include "MoDiffEnginePatterns.h"
#include "MoDiffFileContent.h"
#include "MoDiffMarkupSplitter.h"
#include "MoDiffShownText.h"
#include "MoDiffTextDiff.h"

#include <algorithm>

namespace {

void noteNul(char const* side, std::string_view file, std::vector<std::string>& notes) {
    std::size_t const nul = file.find('\0');
    if (nul != std::string_view::npos)
        notes.push_back(std::string("The ") + side + " holds a NUL at byte " + std::to_string(nul) +
                        "; what follows it is not compared.");
}

void replaceAll(std::string& text, std::string const& what, std::string const& with) {
    for (std::size_t at = text.find(what); at != std::string::npos && !what.empty();
         at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
}

} // namespace

MoDiffPairExplanation MoDiffPairExplanation::explain(MoDiffFormatRow const& format,
                                                     MoDiffEngineSettings const& settings,
                                                     std::string const& masterName, std::string const& actualName,
                                                     std::string const& output, Options const& options) {
    MoDiffPairExplanation explanation;
    if (format.comparison == MoDiffFormatRow::eScript && !options.raw) {
        explanation.describeOutput(output, masterName, actualName);
        return explanation;
    }
    bool const isWhole = options.raw || format.comparison == MoDiffFormatRow::eBytes;
    bool isBinary = false;
    MoDiffLib::Patterns const patterns = isWhole ? MoDiffLib::Patterns() : MoDiffEnginePatterns::of(format, settings);
    auto const read = [&](char const* side, std::string const& name) {
        std::string file = MoDiffFileContent::read(name);
        if (isWhole) {
            isBinary = isBinary || file.find('\0') != std::string::npos;
            return MoDiffCleansedText(std::move(file));
        }
        noteNul(side, file, explanation.m_notes);
        return MoDiffCleansedText(std::move(file), patterns);
    };
    MoDiffBothSides<MoDiffCleansedText> texts = {read("master", masterName), read("actual", actualName)};
    std::vector<MoDiffChange> changes;
    if (!isBinary) {
        explanation.m_view = format.comparison == MoDiffFormatRow::eBytes ? eRecords : eText;
        changes = explanation.compare({texts.master.text(), texts.actual.text()});
    }
    explanation.m_sources = {texts.master.takeFile(masterName), texts.actual.takeFile(actualName)};
    if (isBinary)
        explanation.describeBytes();
    else
        explanation.show(std::move(changes), options.contextLines);
    return explanation;
}

/// Finds the changes, and says what the texts tell of them.
std::vector<MoDiffChange> MoDiffPairExplanation::compare(Texts const& texts) {
    m_separator = MoDiffCsvSplitter::separatorOf(texts.master);
    MoDiffMarkupSplitter const markup;
    MoDiffCsvSplitter const records(m_separator);
    MoDiffSplitter const& splitter = m_view == eRecords ? static_cast<MoDiffSplitter const&>(records) : markup;
    std::vector<MoDiffChange> changes = MoDiffTextDiff::find(texts.master, texts.actual, splitter);
    if (!changes.empty())
        m_labels = MoDiffLabels::ofTexts(texts);
    describeKinds(texts, changes);
    auto const isCoarse = [](MoDiffChange const& change) { return change.grain > MoDiffGrain::eTokens; };
    if (auto const coarse = std::count_if(changes.begin(), changes.end(), isCoarse); coarse != 0)
        m_notes.push_back(std::to_string(coarse) + " of " + std::to_string(changes.size()) +
                          " changes are shown as whole lines or blocks: the texts are too large or too different "
                          "to compare them word by word.");
    return changes;
}

/// Finds where the changes stand in the files.
void MoDiffPairExplanation::show(std::vector<MoDiffChange> changes, std::size_t contextLines) {
    m_changes = MoDiffHunks::place(m_sources, changes);
    std::vector<MoDiffChange>().swap(changes); // placed, each is there twice
    m_hunks = MoDiffHunks::find(m_sources, m_changes, contextLines);
    if (!m_changes.empty())
        MoDiffLabels::addOfFiles(m_sources, m_changes, m_labels);
}

/// Bytes are compared at the same offsets; runs that differ are changes.
void MoDiffPairExplanation::describeBytes() {
    m_view = eBytes;
    std::string_view const master = m_sources.master.file();
    std::string_view const actual = m_sources.actual.file();
    std::size_t const common = std::min(master.size(), actual.size());
    std::vector<MoDiffChange> changes;
    for (std::size_t at = 0; at < common; ++at) {
        if (master[at] == actual[at])
            continue;
        if (changes.empty() || changes.back().ranges.master.end != at)
            changes.push_back({{{at, at}, {at, at}}, MoDiffGrain::eTokens});
        changes.back().ranges.master.end = changes.back().ranges.actual.end = at + 1;
    }
    if (master.size() != actual.size())
        changes.push_back({{{common, master.size()}, {common, actual.size()}}, MoDiffGrain::eTokens});
    for (MoDiffChange const& change : changes)
        m_changes.push_back({change, change.ranges, {}});
    if (!changes.empty()) {
        m_labels = MoDiffLabels::ofTexts({master, actual});
        MoDiffLabels::addOfFiles(m_sources, m_changes, m_labels);
    }
    describeKinds({master, actual}, changes);
}

/// Scripts that say the same of other files make a group with them.
void MoDiffPairExplanation::describeOutput(std::string const& output, std::string const& masterName,
                                           std::string const& actualName) {
    m_view = eScript;
    m_output = output;
    std::string words = output;
    replaceAll(words, masterName, "MASTER");
    replaceAll(words, actualName, "ACTUAL");
    std::size_t const firstLine = std::min(words.find('\n'), words.size());
    m_signature = MoDiffSignature::ofBytes(words);
    m_kinds = {{m_signature, MoDiffShownText::escaped(words.substr(0, firstLine)), 1}};
}

void MoDiffPairExplanation::describeKinds(Texts const& texts, std::vector<MoDiffChange> const& changes) {
    MoDiffSignature::Difference difference = MoDiffSignature::of(texts, changes);
    m_kinds = std::move(difference.kinds);
    m_signature = std::move(difference.signature);
}
