#include "KLTThreadGuard.h"

KLTThreadGuard::KLTThreadGuard(KLTThreadLockableResource& resource) : m_resource(resource) {
    m_resource.lock();
}

KLTThreadGuard::~KLTThreadGuard() {
    m_resource.unlock();
}
