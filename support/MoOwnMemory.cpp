#include "MoOwnMemory.h"

#include "MoHeap.h"

#include <atomic>

namespace {

std::atomic<long> totalBytes{0};

} // namespace

MoOwnMemory::~MoOwnMemory() {
    totalBytes -= m_bytes;
}

MoOwnMemory::Scope::Scope(MoOwnMemory& owner) : m_owner(owner), m_before(MoHeap::bytesInUse()) {
}

MoOwnMemory::Scope::~Scope() {
    long const growth = static_cast<long>(MoHeap::bytesInUse() - m_before);
    m_owner.m_bytes += growth;
    totalBytes += growth;
}

long MoOwnMemory::total() {
    return totalBytes;
}
