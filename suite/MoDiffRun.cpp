#include "MoDiffRun.h"

#include "MoDiffPairIdentity.h"
#include "MoDiffRecordReader.h"
#include "MoDiffRecordWriter.h"
#include "MoDiffSignalName.h"
#include "MoDiffSummaryFile.h"
#include "MoDiffWholeFile.h"
#include "MoDiffWorkerPool.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

auto const kProgressInterval = 100ms;
auto const kWorthNaming = 1s; // how long a pair must run to be named
int const kStatusOfSignals = 128;
std::uint32_t const kUnknownPair = UINT32_MAX;

class Run {
public:
    Run(MoDiffPlan const& plan, MoDiffSuiteConfiguration const& configuration, MoDiffRunOptions const& options,
        MoDiffRunEvents& events)
        : m_plan(plan), m_configuration(configuration), m_options(options), m_events(events),
          m_header(options.header), m_outcomes(plan.pairs.size()) {}

    MoDiffRunReport perform();

private:
    void openRecord();
    void takeUp(MoDiffPairResult const& result);
    void takeUpFresh();
    bool isWanted(std::uint32_t index) const;
    std::uint32_t indexOf(std::string const& id) const;
    std::vector<std::uint32_t> orderRest() const;
    void compareAll();
    void take(MoDiffWorkerPool::Done const& done);
    void tell(MoDiffWorkerPool::Done const& done);
    bool isToEnd() const;
    bool isToStop() const;
    void showProgress(MoDiffWorkerPool const& pool);
    void closeRecord();
    void writeSummary() const;
    int exitStatus() const;
    bool newFails() const;

    MoDiffPlan const& m_plan;
    MoDiffSuiteConfiguration const& m_configuration;
    MoDiffRunOptions const& m_options;
    MoDiffRunEvents& m_events;
    MoDiffRecordHeader m_header;
    std::vector<std::optional<MoDiffOutcome>> m_outcomes; ///< by index into the plan's pairs
    std::optional<MoDiffRecordWriter> m_record;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_lastProgress;
    MoDiffRunReport m_report;
};

MoDiffRunReport Run::perform() {
    m_header.version = MODIFF_VERSION;
    m_header.digest = m_plan.digest;
    m_header.chosenDigest = m_plan.chosenDigest;
    m_header.unreadable = m_plan.unreadable;
    m_header.pairs = m_plan.selected.size();
    m_header.newFails = m_configuration.newFiles == MoDiffSuiteConfiguration::eNewFail;
    if (!m_options.summaryFile.empty())
        MoDiffWholeFile::prepare(m_options.summaryFile);
    openRecord();
    compareAll();
    m_report.complete = m_report.totals.getAll() == m_plan.selected.size();
    closeRecord();
    writeSummary();
    m_report.exitStatus = exitStatus();
    return m_report;
}

void Run::openRecord() {
    if (m_options.outDirectory.empty())
        return;
    m_record.emplace(m_options.outDirectory);
    m_report.recordFile = m_record->getFileName();
    if (m_options.resume)
        m_record->resume(m_header, [this](MoDiffPairResult const& result) { takeUp(result); });
    else if (m_options.isStale)
        takeUpFresh();
    else
        m_record->start(m_header);
}

/// Copies from the record that is there what still holds. A record that cannot be read, or was written by another
/// configuration, holds nothing.
void Run::takeUpFresh() {
    m_record->startBeside(m_header);
    try {
        MoDiffRecordReader reader(m_report.recordFile);
        if (reader.getHeader().config != MoDiffRecord::parse(MoDiffRecord::headerLine(m_header)).header.config)
            return;
        for (MoDiffPairResult result; reader.next(result);) {
            std::uint32_t const index = indexOf(result.id);
            if (!isWanted(index) || m_outcomes[index] || m_options.isStale(m_plan.pairs[index]))
                continue;
            m_record->add(std::string(reader.getLine()) + "\n");
            takeUp(result);
        }
    } catch (MoDiffRecordError const&) { // what was taken up before is whole
    }
}

bool Run::isWanted(std::uint32_t index) const {
    return std::binary_search(m_plan.selected.begin(), m_plan.selected.end(), index);
}

void Run::takeUp(MoDiffPairResult const& result) {
    std::uint32_t const index = indexOf(result.id);
    if (!isWanted(index) || m_outcomes[index])
        throw MoDiffRecordError(m_report.recordFile + ": the pair " + result.id +
                                (isWanted(index) ? " is there twice" : " is none of those to be compared"));
    m_outcomes[index] = result.outcome;
    m_report.totals.add(result.outcome);
    m_events.takenUp(result);
}

/// Pairs are in the order of their ids.
std::uint32_t Run::indexOf(std::string const& id) const {
    auto const pair = std::lower_bound(
        m_plan.pairs.begin(), m_plan.pairs.end(), id,
        [](MoDiffPair const& candidate, std::string const& wanted) { return candidate.id < wanted; });
    bool const isKnown = pair != m_plan.pairs.end() && pair->id == id;
    return isKnown ? static_cast<std::uint32_t>(pair - m_plan.pairs.begin()) : kUnknownPair;
}

/// What is not done yet, pairs that scripts compare first: they are slow, and none is to be the last to begin.
std::vector<std::uint32_t> Run::orderRest() const {
    std::vector<std::uint32_t> order;
    for (std::size_t const index : m_plan.selected)
        if (!m_outcomes[index])
            order.push_back(static_cast<std::uint32_t>(index));
    std::stable_partition(order.begin(), order.end(), [this](std::uint32_t index) {
        return m_plan.pairs[index].setup->format->comparison == MoDiffFormatRow::eScript;
    });
    return order;
}

void Run::compareAll() {
    MoDiffPairComparison::Settings const settings = {&m_configuration, m_options.expectedReason, m_options.inWorker,
                                                     m_options.outDirectory};
    std::vector<std::uint32_t> order = orderRest();
    m_events.started(order.size());
    MoDiffWorkerPool pool(m_plan.pairs, std::move(order), settings, m_options.startLimit);
    if (m_options.failFast > m_report.totals.getFailures())
        pool.stopAfterFailures(static_cast<std::uint32_t>(m_options.failFast - m_report.totals.getFailures()));
    while (!isToEnd() && pool.step([this](MoDiffWorkerPool::Done const& done) { take(done); })) {
        if (m_record)
            m_record->flushIfDue();
        showProgress(pool);
        if (isToStop())
            pool.stop();
    }
    m_report.signal = isToEnd() ? m_options.signal->load() : 0;
    pool.end();
}

void Run::take(MoDiffWorkerPool::Done const& done) {
    if (m_record)
        m_record->add(done.line);
    m_outcomes[done.index] = done.outcome;
    m_report.totals.add(done.outcome);
    tell(done);
}

void Run::tell(MoDiffWorkerPool::Done const& done) {
    if (done.outcome != MoDiffOutcome::ePassed || done.hasWarnings) {
        m_events.finished(MoDiffRecord::parse(done.line).pair);
        return;
    }
    MoDiffPair const& pair = m_plan.pairs[done.index]; // parsing all that is never shown would take too long
    MoDiffPairResult result = MoDiffPairIdentity::resultOf(pair);
    result.outcome = done.outcome;
    result.seconds = done.seconds;
    m_events.finished(result);
}

bool Run::isToEnd() const {
    return m_options.signal && *m_options.signal != 0;
}

bool Run::isToStop() const {
    return m_options.failFast > 0 && m_report.totals.getFailures() >= m_options.failFast;
}

void Run::showProgress(MoDiffWorkerPool const& pool) {
    Clock::time_point const now = Clock::now();
    if (now - m_lastProgress < kProgressInterval)
        return;
    m_lastProgress = now;
    MoDiffRunEvents::Progress progress = {m_report.totals.getAll(), m_plan.selected.size(), "", 0ms};
    std::optional<MoDiffWorkerPool::Running> const longest = pool.getLongestRunning();
    if (longest && longest->since >= kWorthNaming) {
        progress.longestRunning = m_plan.pairs[longest->index].id;
        progress.since = longest->since;
    }
    m_events.progressed(progress);
}

void Run::closeRecord() {
    if (!m_record)
        return;
    MoDiffRecordEnd end;
    end.complete = m_report.complete;
    if (!end.complete)
        end.stopped = m_report.signal ? MoDiffSignalName::of(m_report.signal) : "fail-fast";
    end.totals = m_report.totals;
    end.seconds = std::chrono::duration<double>(Clock::now() - m_start).count();
    if (end.complete)
        m_record->add(MoDiffRecord::newFilesLine(m_plan.newFiles));
    m_record->add(MoDiffRecord::endLine(end));
    if (end.complete || !m_options.isStale)
        m_record->finish();
}

void Run::writeSummary() const {
    if (m_options.summaryFile.empty())
        return;
    MoDiffSummaryFile::write(m_options.summaryFile, [this](auto const& tellEntry) {
        for (std::size_t const index : m_plan.selected)
            if (m_outcomes[index])
                tellEntry({m_plan.pairs[index].master, m_plan.pairs[index].actual, *m_outcomes[index]});
    });
}

int Run::exitStatus() const {
    if (m_report.signal)
        return kStatusOfSignals + m_report.signal;
    if (m_plan.selected.empty() && m_plan.chosen > 0 && m_plan.unreadable.empty())
        return 0; // more shards than pairs
    return m_report.totals.getExitStatus(newFails(), !m_plan.unreadable.empty());
}

/// A shard leaves new files to the merge.
bool Run::newFails() const {
    return m_header.newFails && m_report.complete && m_header.shardCount == 1 && !m_plan.newFiles.empty();
}

} // namespace

MoDiffRunReport MoDiffRun::perform(MoDiffPlan const& plan, MoDiffSuiteConfiguration const& configuration,
                                   MoDiffRunOptions const& options, MoDiffRunEvents& events) {
    return Run(plan, configuration, options, events).perform();
}
