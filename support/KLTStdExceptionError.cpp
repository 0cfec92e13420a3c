#include "KLTStdExceptionError.h"

#include <utility>

KLTStdExceptionError::KLTStdExceptionError(std::exception const& wrapped) : KLTThrowable(0, wrapped.what()) {
}

void KLTStdExceptionError::raise() {
    throw std::move(*this);
}
