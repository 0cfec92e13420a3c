#include "KLTThreadLockableResource.h"

KLTThreadLockableResource::~KLTThreadLockableResource() = default;
