#include "KLTOutOfMemoryError.h"

#include <utility>

void KLTOutOfMemoryError::raise() {
    throw std::move(*this);
}
