#include "MoDiffPairComparison.h"

#include "KLTOutOfMemoryError.h"
#include "MoDiffFirstDifference.h"
#include "MoDiffListener.h"
#include "MoDiffPairIdentity.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <new>
#include <string_view>
#include <unistd.h>

namespace fs = std::filesystem;

using Outcome = MoDiffOutcome;
using Bytes = MoDiffBothSides<std::uint64_t>;

namespace {

std::size_t const kBefore = 160; // bytes that a record keeps of both sides of a difference:
std::size_t const kAfter = 240;  // somewhat more than an excerpt on a terminal shows
std::size_t const kNameInResultFile = 100;

/// A side hides very unequally when it hides more than twice what the other does and the excess is more than a tenth
/// of its file.
std::uint64_t const kUnequalFactor = 2;
std::uint64_t const kUnequalPart = 10;

/// The bytes of a text before and from a place on, clipped.
void takeSide(std::string_view text, std::size_t place, std::string& before, std::string& after) {
    place = std::min(place, text.size());
    std::size_t const begin = place - std::min(place, kBefore);
    before = text.substr(begin, place - begin);
    after = text.substr(place, kAfter);
}

MoDiffDifference differenceAt(std::string_view master, std::string_view actual, std::size_t place) {
    MoDiffDifference difference;
    difference.position = place;
    takeSide(master, place, difference.before.master, difference.after.master);
    takeSide(actual, place, difference.before.actual, difference.after.actual);
    return difference;
}

/// A span of time in its largest unit that leaves no rest: "36 hours".
std::string spanWords(std::chrono::seconds span) {
    struct Unit {
        long long seconds;
        char const* name;
    };
    static Unit const units[] = {{86400, "day"}, {3600, "hour"}, {60, "minute"}, {1, "second"}};
    for (Unit const& unit : units)
        if (span.count() >= unit.seconds && span.count() % unit.seconds == 0) {
            long long const count = span.count() / unit.seconds;
            return std::to_string(count) + " " + unit.name + (count == 1 ? "" : "s");
        }
    return "0 seconds";
}

unsigned percentOf(std::uint64_t part, std::uint64_t whole) {
    return static_cast<unsigned>(static_cast<double>(part) * 100 /
                                 static_cast<double>(std::max<std::uint64_t>(whole, 1)));
}

bool isVeryUnequal(std::uint64_t more, std::uint64_t less, std::uint64_t length) {
    return more > less * kUnequalFactor && (more - less) * kUnequalPart > length;
}

} // namespace

/// Turns the result that an engine delivers into an outcome.
class MoDiffPairComparison::Taker : public MoDiffListener {
public:
    Taker(MoDiffFormatRow const& format, MoDiffPairResult& result, MoDiffListener* next)
        : m_format(format), m_result(result), m_next(next) {}

    using MoDiffListener::comparisonNotification;
    void comparisonNotification(MoDiffResultPass const& result) override { take(Outcome::ePassed, "", result); }
    void comparisonNotification(MoDiffResultFail const& result) override {
        take(Outcome::eDifferent, "the files differ", result);
    }
    void comparisonNotification(MoDiffResultFailDiff const& result) override;
    void comparisonNotification(MoDiffResultFailDiffNormalized const& result) override;
    void comparisonNotification(MoDiffResultFailFileMissing const& result) override;

private:
    void take(Outcome outcome, std::string const& detail, MoDiffResult const& result) {
        m_result.outcome = outcome;
        m_result.detail = detail;
        if (m_next)
            result.notifyListener(*m_next);
    }

    MoDiffFormatRow const& m_format;
    MoDiffPairResult& m_result;
    MoDiffListener* m_next;
};

void MoDiffPairComparison::Taker::comparisonNotification(MoDiffResultFailDiff const& result) {
    std::optional<MoDiffFirstDifference> found;
    if (m_format.comparison != MoDiffFormatRow::eScript)
        found = MoDiffFirstDifference::find(result.getMasterName(), result.getActualName(),
                                            /*withoutReturns=*/m_format.comparison == MoDiffFormatRow::eText);
    if (!found) {
        take(Outcome::eDifferent, "the files differ", result);
        return;
    }
    m_result.difference = differenceAt(found->master, found->actual, found->place);
    m_result.difference->position = found->position;
    m_result.difference->line = found->line;
    take(Outcome::eDifferent, "in line " + std::to_string(found->line), result);
}

void MoDiffPairComparison::Taker::comparisonNotification(MoDiffResultFailDiffNormalized const& result) {
    auto const place = static_cast<std::size_t>(result.getDiffPosition());
    m_result.difference = differenceAt(result.getNormalizedMaster(), result.getNormalizedActual(), place);
    take(Outcome::eDifferent, "at byte " + std::to_string(place) + " of the normalized texts", result);
}

void MoDiffPairComparison::Taker::comparisonNotification(MoDiffResultFailFileMissing const& result) {
    bool const isMaster = result.getMissingFile() == result.getMasterName();
    take(isMaster ? Outcome::eError : Outcome::eMissing, isMaster ? "the master is gone" : "no actual file", result);
}

MoDiffPairComparison::MoDiffPairComparison(Settings settings)
    : m_settings(std::move(settings)), m_start(std::time(nullptr)), m_scripts(m_settings.watchStart) {
}

MoDiffPairComparison::~MoDiffPairComparison() = default;

MoDiffPairResult MoDiffPairComparison::compare(MoDiffPair const& pair) {
    auto const start = std::chrono::steady_clock::now();
    MoDiffPairResult result = MoDiffPairIdentity::resultOf(pair);
    try {
        judge(pair, result);
    } catch (KLTOutOfMemoryError const&) {
        result.outcome = Outcome::eMemory;
        result.detail = "the comparison ran out of memory";
    } catch (std::bad_alloc const&) {
        result.outcome = Outcome::eMemory;
        result.detail = "the comparison ran out of memory";
    } catch (std::exception const& error) {
        result.outcome = Outcome::eError;
        result.detail = error.what();
    }
    expect(pair, result);
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}

void MoDiffPairComparison::judge(MoDiffPair const& pair, MoDiffPairResult& result) {
    m_facts.reset();
    bool const isText = pair.setup->format->comparison == MoDiffFormatRow::eText;
    std::optional<MoDiffFileState> master;
    std::optional<MoDiffFileState> actual;
    if (!(isText && pair.isRegular)) // a FIFO would wait for ever
        master.emplace(pair.master);
    if (!isText)
        actual.emplace(pair.actual);
    result.outcome = Outcome::eError;
    if (!master || (master->exists() && master->getTrouble().empty()))
        compareFiles(pair, result);
    takeFacts(result);
    if (m_facts.hasTexts()) { // the usual case does with what the library has asked the system for
        warnOfReadFiles(result);
        return;
    }
    if (!master)
        master.emplace(pair.master);
    if (!actual)
        actual.emplace(pair.actual);
    nameTroubles(pair, *master, *actual, result);
    addHash(pair, *master, *actual, result);
    warnOfFiles(pair, *master, *actual, result);
}

/// Engines call whatever they cannot open missing, and scripts end without a verdict, so the word is found here.
void MoDiffPairComparison::nameTroubles(MoDiffPair const& pair, MoDiffFileState const& master,
                                        MoDiffFileState const& actual, MoDiffPairResult& result) {
    std::string trouble;
    if (!master.getTrouble().empty())
        trouble = "the master " + pair.master + ": " + master.getTrouble();
    else if (!master.exists())
        trouble = "the master " + pair.master + " is gone";
    else if (!actual.getTrouble().empty())
        trouble = "the actual file " + pair.actual + ": " + actual.getTrouble();
    if (!trouble.empty()) {
        result.outcome = Outcome::eError;
        result.detail = trouble;
    }
    if (result.outcome != Outcome::eMissing && result.outcome != Outcome::eError)
        return;
    nameOpenTrouble("the master ", pair.master, master, result);
    nameOpenTrouble("the actual file ", pair.actual, actual, result);
}

void MoDiffPairComparison::nameOpenTrouble(char const* side, std::string const& path, MoDiffFileState const& state,
                                           MoDiffPairResult& result) {
    bool const isRegular = state.exists() && state.getTrouble().empty();
    std::string const trouble = isRegular ? MoDiffFileState::findOpenTrouble(path) : "";
    if (trouble.empty())
        return;
    result.outcome = Outcome::eError;
    result.detail = side + path + ": " + trouble;
}

void MoDiffPairComparison::compareFiles(MoDiffPair const& pair, MoDiffPairResult& result) {
    std::string const resultFile = resultFileFor(pair);
    m_scripts.prepare(resultFile);
    Taker taker(*pair.setup->format, result, m_settings.listener);
    engineFor(*pair.setup).compareMaster(pair.master, {&taker});
    takeScriptEnd(resultFile, result);
}

MoDiffFileEngine const& MoDiffPairComparison::engineFor(MoDiffEngineSetup const& setup) {
    std::unique_ptr<MoDiffFileEngine>& engine = m_engines[&setup];
    if (!engine)
        engine = setup.format->makeEngine(setup.settings);
    return *engine;
}

/// Where the script of a workbook lists all differences. Each pair has its own file, so that workers don't write over
/// each other's.
std::string MoDiffPairComparison::resultFileFor(MoDiffPair const& pair) const {
    if (m_settings.outDirectory.empty() || pair.setup->format->comparison != MoDiffFormatRow::eScript)
        return "/dev/null";
    fs::path const folder = fs::path(m_settings.outDirectory) / pair.setup->format->word;
    std::string const name = fs::path(pair.master).filename().string().substr(0, kNameInResultFile);
    std::string file =
        (folder / (name + "-" + MoDiffContentHash::digitsOf(pair.id.data(), pair.id.size()) + ".qpr")).string();
    if (pair.setup->format->format == eFormatXlsx) {
        fs::create_directories(folder);
        unlink(file.c_str()); // of an earlier run
    }
    return file;
}

void MoDiffPairComparison::takeScriptEnd(std::string const& resultFile, MoDiffPairResult& result) const {
    MoDiffScriptEnd const& end = m_scripts.getEnd();
    if (end.kind == MoDiffScriptEnd::eNotRun)
        return;
    result.output = end.output;
    if (end.kind == MoDiffScriptEnd::eCompared) {
        result.detail = result.outcome == Outcome::eDifferent ? "the script tells differences" : result.detail;
    } else {
        result.outcome = end.kind == MoDiffScriptEnd::eMemory    ? Outcome::eMemory
                         : end.kind == MoDiffScriptEnd::eCrashed ? Outcome::eCrashed
                                                                 : Outcome::eError;
        result.detail = end.detail;
    }
    if (resultFile == "/dev/null")
        return;
    if (result.outcome == Outcome::ePassed)
        unlink(resultFile.c_str());
    else if (access(resultFile.c_str(), F_OK) == 0)
        result.resultFile = resultFile;
}

void MoDiffPairComparison::takeFacts(MoDiffPairResult& result) const {
    if (!m_facts.hasTexts())
        return;
    MoDiffBothSides<MoDiffComparisonFacts::Text> const& texts = m_facts.getTexts();
    result.bytes = Bytes{texts.master.length, texts.actual.length};
    result.hash = {texts.master.hash, texts.actual.hash};
    result.hidden = m_facts.getHidden();
    result.patterns = m_facts.getPatterns();
    judgeNul(result);
    warnOfTexts(result);
    warnOfHidden(result);
}

/// Behind a NUL nothing is compared, so that a text with one has no whole verdict.
void MoDiffPairComparison::judgeNul(MoDiffPairResult& result) const {
    std::optional<std::size_t> const nul = m_facts.getNul();
    if (!nul)
        return;
    std::string const words = "a NUL stands at byte " + std::to_string(*nul) + ", from which on nothing was compared";
    if (m_settings.configuration->nul == MoDiffSuiteConfiguration::eNulWarn) {
        result.warnings.push_back(words);
        return;
    }
    result.outcome = Outcome::eError;
    result.detail = words;
}

/// Reads whatever the comparison did not read whole before the observer.
void MoDiffPairComparison::addHash(MoDiffPair const& pair, MoDiffFileState const& master,
                                   MoDiffFileState const& actual, MoDiffPairResult& result) const {
    MoDiffBothSides<MoDiffContentHash> const& blocks = m_facts.getBlocks();
    if (pair.setup->format->comparison == MoDiffFormatRow::eBytes && result.outcome == Outcome::ePassed) {
        result.bytes = Bytes{blocks.master.getLength(), blocks.actual.getLength()};
        result.hash = {blocks.master.getDigits(), blocks.actual.getDigits()};
        return;
    }
    result.bytes.emplace();
    addSideHash("the master ", pair.master, master, result.bytes->master, result.hash.master, result);
    addSideHash("the actual file ", pair.actual, actual, result.bytes->actual, result.hash.actual, result);
}

void MoDiffPairComparison::addSideHash(char const* side, std::string const& path, MoDiffFileState const& state,
                                       std::uint64_t& length, std::string& hash, MoDiffPairResult& result) {
    if (!state.exists() || !state.getTrouble().empty()) // a FIFO would wait for ever
        return;
    if (std::optional<MoDiffContentHash::File> const file = MoDiffContentHash::ofFile(path)) {
        length = file->length;
        hash = file->digits;
    } else if (result.outcome == Outcome::eDifferent || result.outcome == Outcome::ePassed) {
        result.outcome = Outcome::eError; // for engines, a read error is a difference
        result.detail = side + path + ": cannot be read to its end";
    }
}

void MoDiffPairComparison::warnOfTexts(MoDiffPairResult& result) const {
    MoDiffBothSides<MoDiffComparisonFacts::Text> const& texts = m_facts.getTexts();
    if (texts.master.hasByteOrderMark != texts.actual.hasByteOrderMark)
        result.warnings.push_back(std::string("only the ") +
                                  (texts.master.hasByteOrderMark ? "master" : "actual file") +
                                  " begins with a byte-order mark");
    auto const warn = [&result](char const* side, std::optional<std::size_t> const& invalid) {
        if (invalid)
            result.warnings.push_back(std::string("the ") + side +
                                      " holds bytes that are not UTF-8, the first at byte " +
                                      std::to_string(*invalid));
    };
    warn("master", texts.master.invalid);
    warn("actual file", texts.actual.invalid);
}

void MoDiffPairComparison::warnOfHidden(MoDiffPairResult& result) const {
    if (!result.hidden)
        return;
    Bytes const& hidden = *result.hidden;
    Bytes const& all = *result.bytes;
    auto const isMuch = [this](std::uint64_t part, std::uint64_t whole) {
        return static_cast<double>(part) * 100 > m_settings.configuration->hiddenWarning * static_cast<double>(whole);
    };
    if (result.outcome == Outcome::ePassed &&
        (isMuch(hidden.master, all.master) || isMuch(hidden.actual, all.actual)))
        result.warnings.push_back("cleansing hides " + std::to_string(percentOf(hidden.master, all.master)) +
                                  " % of the master and " + std::to_string(percentOf(hidden.actual, all.actual)) +
                                  " % of the actual file");
    if (isVeryUnequal(hidden.master, hidden.actual, all.master) ||
        isVeryUnequal(hidden.actual, hidden.master, all.actual))
        result.warnings.push_back("cleansing hides very unequal parts: " + std::to_string(hidden.master) +
                                  " bytes of the master, " + std::to_string(hidden.actual) + " of the actual file");
}

void MoDiffPairComparison::warnOfReadFiles(MoDiffPairResult& result) const {
    MoDiffBothSides<MoDiffComparisonFacts::Text> const& texts = m_facts.getTexts();
    MoDiffComparisonObserver::File const& master = texts.master.file;
    MoDiffComparisonObserver::File const& actual = texts.actual.file;
    warnOfFiles(master.device == actual.device && master.inode == actual.inode, actual.modified,
                {master.hasChanged, actual.hasChanged}, result);
}

void MoDiffPairComparison::warnOfFiles(MoDiffPair const& pair, MoDiffFileState const& master,
                                       MoDiffFileState const& actual, MoDiffPairResult& result) {
    if (!actual.exists()) {
        std::string const twin = result.outcome == Outcome::eMissing ? m_twins.find(pair.actual) : "";
        if (!twin.empty())
            result.warnings.push_back("there is a file whose name differs only in case: " + twin);
        return;
    }
    bool const isOne = master.exists() && master.isSameFile(actual);
    warnOfFiles(
        isOne, actual.getModificationTime(),
        {!master.isUnchanged(MoDiffFileState(pair.master)), !actual.isUnchanged(MoDiffFileState(pair.actual))},
        result);
}

void MoDiffPairComparison::warnOfFiles(bool isOneFile, std::int64_t modified, MoDiffBothSides<bool> const& hasChanged,
                                       MoDiffPairResult& result) const {
    std::vector<std::string>& warnings = result.warnings;
    if (isOneFile)
        warnings.emplace_back("master and actual file are one and the same file");
    auto const& maxAge = m_settings.configuration->maxAge;
    if (maxAge && m_start - modified > maxAge->count())
        warnings.push_back("the actual file is older than " + spanWords(*maxAge));
    if (hasChanged.master)
        warnings.emplace_back("the master changed while it was compared");
    if (hasChanged.actual)
        warnings.emplace_back("the actual file changed while it was compared");
}

void MoDiffPairComparison::expect(MoDiffPair const& pair, MoDiffPairResult& result) const {
    std::string const* const reason = m_settings.expectedReason ? m_settings.expectedReason(pair) : nullptr;
    if (!reason)
        return;
    if (result.outcome == Outcome::ePassed) {
        result.outcome = Outcome::eUnexpectedlyPassed;
        result.detail = "a difference is expected: " + *reason;
    } else if (result.outcome == Outcome::eDifferent || result.outcome == Outcome::eMissing) {
        result.outcome = Outcome::eExpected;
        result.detail = "expected: " + *reason + "; " + result.detail;
    }
}
