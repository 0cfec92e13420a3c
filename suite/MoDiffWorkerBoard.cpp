#include "MoDiffWorkerBoard.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <new>
#include <sys/mman.h>
#include <system_error>

namespace {

std::uint32_t now() {
    using namespace std::chrono;
    return static_cast<std::uint32_t>(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

} // namespace

MoDiffWorkerBoard::MoDiffWorkerBoard(std::size_t workers) : m_size(sizeFor(workers)) {
    void* const memory = mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::system_error(errno, std::generic_category(), "cannot share memory with workers");
    m_shared = new (memory) Shared; // the memory comes as zeros, which is what an idle board holds
}

MoDiffWorkerBoard::~MoDiffWorkerBoard() {
    munmap(m_shared, m_size);
}

std::size_t MoDiffWorkerBoard::sizeFor(std::size_t workers) {
    return sizeof(Shared) + workers * sizeof(Slot);
}

void MoDiffWorkerBoard::restart() {
    m_shared->next = 0;
}

std::optional<std::uint32_t> MoDiffWorkerBoard::claim(std::size_t worker, std::size_t count) {
    if (!isOpen(count))
        return std::nullopt;
    std::uint32_t const place = m_shared->next++;
    if (place >= count)
        return std::nullopt;
    Slot& slot = m_shared->slots[worker];
    slot.start = now();
    slot.isStarting = false;
    slot.place = place + 1;
    return place;
}

/// The time comes first, so that no reader takes that of a start for the comparison's.
void MoDiffWorkerBoard::noteStart(std::size_t worker, bool isStarting) {
    Slot& slot = m_shared->slots[worker];
    slot.start = now();
    slot.isStarting = isStarting;
}

void MoDiffWorkerBoard::release(std::size_t worker) {
    m_shared->slots[worker].place = 0;
}

std::size_t MoDiffWorkerBoard::countLeft(std::size_t count) const {
    return m_shared->stopped ? 0 : count - std::min<std::size_t>(m_shared->next, count);
}

void MoDiffWorkerBoard::stop() {
    m_shared->stopped = true;
}

void MoDiffWorkerBoard::stopAfterFailures(std::uint32_t count) {
    m_shared->failuresLeft = count;
}

void MoDiffWorkerBoard::countFailure() {
    std::uint32_t left = m_shared->failuresLeft;
    while (left > 0 && !m_shared->failuresLeft.compare_exchange_weak(left, left - 1)) {
    }
    if (left == 1)
        stop();
}

std::optional<MoDiffWorkerBoard::Work> MoDiffWorkerBoard::look(std::size_t worker) const {
    Slot const& slot = m_shared->slots[worker];
    std::uint32_t const place = slot.place;
    bool const isStarting = slot.isStarting; // before the time, see noteStart()
    std::uint32_t const start = slot.start;
    if (place == 0 || slot.place != place) // it has gone on since
        return std::nullopt;
    return Work{place - 1, now() - start, isStarting};
}
