#include "KLTThreadCriticalSection.h"

KLTThreadCriticalSection::KLTThreadCriticalSection(int) {
}

void KLTThreadCriticalSection::lock() {
    m_mutex.lock();
}

void KLTThreadCriticalSection::unlock() {
    m_mutex.unlock();
}
