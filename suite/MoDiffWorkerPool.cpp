#include "MoDiffWorkerPool.h"

#include "MoDiffPairIdentity.h"
#include "MoDiffProcessMemory.h"
#include "MoDiffRecord.h"
#include "MoDiffSignalName.h"
#include "MoDiffStrayProcesses.h"
#include "MoDiffWorkerFrame.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

std::size_t const kMaximumVainStarts = 200; // of processes that end before they have claimed a pair
int const kPipeSize = 1 << 20;              // so that workers need not wait while the run naps
std::size_t const kReadSize = 1 << 18;
auto const kLookInterval = 50ms; // at the limits
auto const kShortestNap = 500us;
auto const kLongestNap = 8ms;

/// What a record tells of a pair without a comparison.
MoDiffPairResult resultWithout(MoDiffPair const& pair, MoDiffOutcome outcome, std::string detail, double seconds) {
    MoDiffPairResult result = MoDiffPairIdentity::resultOf(pair);
    result.outcome = outcome;
    result.detail = std::move(detail);
    result.seconds = seconds;
    return result;
}

std::string describeEnd(int status) {
    if (WIFSIGNALED(status))
        return "the process that compared it was ended by " + MoDiffSignalName::of(WTERMSIG(status));
    return "the process that compared it ended with status " + std::to_string(WEXITSTATUS(status));
}

std::string inWords(std::chrono::milliseconds time) {
    return time % 1s == 0ms ? std::to_string(time / 1s) + " s" : std::to_string(time.count()) + " ms";
}

} // namespace

MoDiffWorkerPool::MoDiffWorkerPool(std::vector<MoDiffPair> const& pairs, std::vector<std::uint32_t> order,
                                   MoDiffPairComparison::Settings const& settings,
                                   std::chrono::milliseconds startLimit)
    : m_pairs(pairs), m_order(std::move(order)), m_isDone(m_order.size()), m_settings(settings), m_block(kReadSize),
      m_startLimit(startLimit), m_board(std::max(1U, settings.configuration->jobs)),
      m_others(MoDiffStrayProcesses::list()) {
    MoDiffStrayProcesses::adopt();
    m_processes.resize(std::max(1U, settings.configuration->jobs));
}

MoDiffWorkerPool::~MoDiffWorkerPool() {
    end();
}

bool MoDiffWorkerPool::step(Sink const& sink) {
    if (!isAnyAlive() && !startRound())
        return false;
    std::size_t const frames = readAll(sink);
    if (std::chrono::steady_clock::now() - m_lastLook >= kLookInterval)
        watchLimits();
    wait(frames);
    return true;
}

/// Starts processes for the pairs that are not done. These are all at first; later the few whose process died between
/// claiming a place and showing it.
bool MoDiffWorkerPool::startRound() {
    std::vector<std::uint32_t> rest;
    for (std::size_t place = 0; place < m_order.size(); ++place)
        if (!m_isDone[place])
            rest.push_back(m_order[place]);
    if (rest.empty() || m_isStopped)
        return false;
    m_order = std::move(rest);
    m_isDone.assign(m_order.size(), false);
    m_board.restart();
    for (std::size_t slot = 0; slot < std::min(m_processes.size(), m_order.size()); ++slot)
        startProcess(slot);
    return true;
}

void MoDiffWorkerPool::startProcess(std::size_t slot) {
    int pipes[2];
    if (pipe2(pipes, O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe for a worker");
    Process process;
    process.pipe = MoDiffDescriptor(pipes[0]);
    MoDiffDescriptor const output(pipes[1]);
    fcntl(pipes[0], F_SETPIPE_SZ, kPipeSize); // a refusal does no harm
    process.id = fork();
    if (process.id == 0)
        becomeWorker(slot, output.get());
    if (process.id < 0 && isAnyAlive())
        return; // the others go on
    if (process.id < 0)
        throw std::system_error(errno, std::generic_category(), "cannot start a worker");
    fcntl(pipes[0], F_SETFL, O_NONBLOCK);
    setpgid(process.id, process.id); // here, too: it may have to be ended before it has run
    m_processes[slot] = std::move(process);
}

void MoDiffWorkerPool::becomeWorker(std::size_t slot, int output) {
    MoDiffWorker({&m_pairs, &m_order, &m_board, &m_settings}, slot, output).run(getppid());
}

/// Reads what the processes have sent and buries those that have ended. Returns the number of pairs.
std::size_t MoDiffWorkerPool::readAll(Sink const& sink) {
    std::size_t frames = 0;
    for (std::size_t slot = 0; slot < m_processes.size(); ++slot) {
        Process& process = m_processes[slot];
        if (!process.id)
            continue;
        ssize_t const count = read(process.pipe.get(), m_block.data(), m_block.size());
        if (count > 0) {
            process.bytes.append(m_block.data(), static_cast<std::size_t>(count));
            frames += decode(process, sink);
        } else if (count == 0) {
            bury(slot, sink);
            ++frames; // there may be more at once
        }
    }
    return frames;
}

std::size_t MoDiffWorkerPool::decode(Process& process, Sink const& sink) {
    std::size_t frames = 0;
    std::string_view rest = process.bytes;
    MoDiffWorkerFrame frame;
    for (std::string_view line; MoDiffWorkerFrame::decode(rest, frame, line); ++frames) {
        m_isDone[frame.place] = true;
        sink({m_order[frame.place], frame.outcome, frame.hasWarnings, frame.seconds, line});
    }
    process.bytes.erase(0, process.bytes.size() - rest.size());
    m_vainStarts = frames ? 0 : m_vainStarts;
    return frames;
}

/// A process has ended, and all that it sent was read.
void MoDiffWorkerPool::bury(std::size_t slot, Sink const& sink) {
    Process& process = m_processes[slot];
    kill(-process.id, SIGKILL); // what it left behind, before its group can be another's
    int status = 0;
    while (waitpid(process.id, &status, 0) < 0 && errno == EINTR) {
    }
    tellLost(slot, status, sink);
    m_board.release(slot);
    process = Process();
    if (status == 0)
        return; // there were no more pairs
    endStrays();
    if (m_board.isOpen(m_order.size()))
        startProcess(slot);
}

/// Tells the pair that a process was at when it died, unless it had been told. The place for which a process was
/// ended may have been done just before that; what it had begun since then is compared again in the next round.
void MoDiffWorkerPool::tellLost(std::size_t slot, int status, Sink const& sink) {
    std::optional<MoDiffWorkerBoard::Work> const work = m_board.look(slot);
    Process const& process = m_processes[slot];
    if (!work || m_isDone[work->place]) {
        if (status != 0 && !process.ended && ++m_vainStarts > kMaximumVainStarts)
            throw std::runtime_error("workers end before they compare anything: " + describeEnd(status));
        return;
    }
    if (process.ended && *process.ended != work->place)
        return;
    std::uint32_t const index = m_order[work->place];
    double const seconds = work->milliseconds / 1000.0;
    std::string const detail = process.ended ? process.detail : describeEnd(status);
    std::string const line = MoDiffRecord::pairLine(resultWithout(m_pairs[index], process.reason, detail, seconds));
    m_isDone[work->place] = true;
    m_vainStarts = 0;
    sink({index, process.reason, !m_pairs[index].warnings.empty(), seconds, line});
}

void MoDiffWorkerPool::watchLimits() {
    m_lastLook = std::chrono::steady_clock::now();
    MoDiffSuiteConfiguration const& limits = *m_settings.configuration;
    for (std::size_t slot = 0; slot < m_processes.size(); ++slot) {
        std::optional<MoDiffWorkerBoard::Work> const work = m_board.look(slot);
        if (!m_processes[slot].id || m_processes[slot].ended || !work)
            continue;
        bool const isScript = m_pairs[m_order[work->place]].setup->format->comparison == MoDiffFormatRow::eScript;
        std::string const late = overTime(*work);
        if (!late.empty())
            endFor(slot, work->place, MoDiffOutcome::eTimeout, late);
        else if (limits.memoryLimit && isScript &&
                 MoDiffProcessMemory::ofTree(m_processes[slot].id) > limits.memoryLimit)
            endFor(slot, work->place, MoDiffOutcome::eMemory,
                   "it took more memory than " + std::to_string(limits.memoryLimit >> 20) + " MiB");
    }
}

/// How a pair exceeds its time, in words; "" when it does not.
std::string MoDiffWorkerPool::overTime(MoDiffWorkerBoard::Work const& work) const {
    std::chrono::milliseconds const limit = work.isStarting ? m_startLimit : m_settings.configuration->timeLimit;
    if (limit == 0ms || std::chrono::milliseconds(work.milliseconds) < limit)
        return "";
    return (work.isStarting ? "the start of its script took longer than " : "it took longer than ") + inWords(limit);
}

void MoDiffWorkerPool::endFor(std::size_t slot, std::uint32_t place, MoDiffOutcome reason,
                              std::string const& detail) {
    Process& process = m_processes[slot];
    process.ended = place;
    process.reason = reason;
    process.detail = detail;
    kill(-process.id, SIGKILL);
}

/// Ends what dead workers have left outside their groups.
void MoDiffWorkerPool::endStrays() const {
    MoDiffStrayProcesses::end([this](pid_t child) {
        return std::find(m_others.begin(), m_others.end(), child) != m_others.end() ||
               std::any_of(m_processes.begin(), m_processes.end(),
                           [child](Process const& process) { return process.id == child; });
    });
}

void MoDiffWorkerPool::stop() {
    m_isStopped = true;
    m_board.stop();
}

void MoDiffWorkerPool::end() {
    stop();
    for (Process& process : m_processes) {
        if (!process.id)
            continue;
        kill(-process.id, SIGKILL);
        while (waitpid(process.id, nullptr, 0) < 0 && errno == EINTR) {
        }
        process = Process();
    }
    endStrays();
}

bool MoDiffWorkerPool::isAnyAlive() const {
    return std::any_of(m_processes.begin(), m_processes.end(),
                       [](Process const& process) { return process.id != 0; });
}

/// Waits for the processes to send more. While pairs come the run naps instead, so that it is not woken for each, but
/// not beyond its end.
void MoDiffWorkerPool::wait(std::size_t frames) {
    if (!isAnyAlive())
        return;
    std::size_t const left = m_board.countLeft(m_order.size());
    if (frames > 0 && left > 0) {
        std::chrono::microseconds const longest = left > 2 * frames ? kLongestNap : kShortestNap;
        m_nap = std::min(std::max<std::chrono::microseconds>(m_nap * 2, kShortestNap), longest);
        std::this_thread::sleep_for(m_nap);
        return;
    }
    m_nap = 0us;
    std::vector<pollfd> events;
    for (Process const& process : m_processes)
        if (process.id)
            events.push_back({process.pipe.get(), POLLIN, 0});
    poll(events.data(), static_cast<nfds_t>(events.size()),
         static_cast<int>(std::chrono::milliseconds(kLookInterval).count()));
}

std::optional<MoDiffWorkerPool::Running> MoDiffWorkerPool::getLongestRunning() const {
    std::optional<Running> longest;
    for (std::size_t slot = 0; slot < m_processes.size(); ++slot) {
        std::optional<MoDiffWorkerBoard::Work> const work = m_board.look(slot);
        if (!m_processes[slot].id || !work)
            continue;
        std::chrono::milliseconds const since(work->milliseconds);
        if (!longest || since > longest->since)
            longest = Running{m_order[work->place], since};
    }
    return longest;
}
