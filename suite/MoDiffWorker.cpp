#include "MoDiffWorker.h"

#include "MoDiffStrayProcesses.h"
#include "MoDiffWorkerFrame.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

int const kExitFailure = 1;

/// The bytes of private, writable memory that this process has mapped.
rlim_t mappedData() {
    std::ifstream file("/proc/self/statm");
    rlim_t pages = 0;
    for (int field = 0; field < 6; ++field) // the sixth is data and stack
        file >> pages;
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

/// The kinds of differences to be left out, for the scripts.
void exportIgnored(std::vector<std::string> const& kinds) {
    std::string list;
    for (std::string const& kind : kinds)
        list.append(list.empty() ? "" : ",").append(kind);
    if (!list.empty())
        setenv("MODIFF_IGNORE", list.c_str(), /*overwrite=*/1);
}

} // namespace

void MoDiffWorker::run(pid_t parent) {
    int status = EXIT_SUCCESS;
    try {
        prepare(parent);
        compareAll();
    } catch (std::exception const& error) {
        std::fprintf(stderr, "modiff: a worker cannot go on: %s\n", error.what());
        status = kExitFailure;
    }
    _exit(status); // buffers and exit handlers are the parent's
}

void MoDiffWorker::prepare(pid_t parent) const {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) // it died before that
        _exit(kExitFailure);
    MoDiffStrayProcesses::adopt();
    for (int const signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGCHLD})
        std::signal(signal, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    exportIgnored(m_work.settings->configuration->ignore);
    limitMemory();
}

/// Bounds what comparisons may take beyond what the process holds already; scripts inherit the limit.
void MoDiffWorker::limitMemory() const {
    std::uint64_t const bytes = m_work.settings->configuration->memoryLimit;
    if (bytes == 0)
        return;
    rlimit limit;
    getrlimit(RLIMIT_DATA, &limit);
    std::uint64_t const wanted = bytes + mappedData();
    if (wanted < limit.rlim_cur)
        limit.rlim_cur = static_cast<rlim_t>(wanted);
    setrlimit(RLIMIT_DATA, &limit);
}

void MoDiffWorker::compareAll() const {
    MoDiffPairComparison::Settings settings = *m_work.settings;
    settings.watchStart = [this](bool isStarting) { m_work.board->noteStart(m_slot, isStarting); };
    MoDiffPairComparison comparison(settings);
    while (std::optional<std::uint32_t> const place = m_work.board->claim(m_slot, m_work.order->size())) {
        MoDiffPair const& pair = (*m_work.pairs)[(*m_work.order)[*place]];
        MoDiffPairResult const result = comparison.compare(pair);
        if (isFailure(result.outcome))
            m_work.board->countFailure(); // at once, or others would begin pairs that nobody wants
        send(MoDiffWorkerFrame::encode(*place, result));
        m_work.board->release(m_slot);
    }
}

void MoDiffWorker::send(std::string_view bytes) const {
    while (!bytes.empty()) {
        ssize_t const count = write(m_output, bytes.data(), bytes.size());
        if (count >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            _exit(kExitFailure); // nobody listens
    }
}
