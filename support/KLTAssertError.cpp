#include "KLTAssertError.h"

#include <utility>

void KLTAssertError::raise() {
    throw std::move(*this);
}
