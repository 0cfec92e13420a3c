#ifndef KLT_OUT_OF_MEMORY_ERROR_H
#define KLT_OUT_OF_MEMORY_ERROR_H

#include "KLTThrowable.h"

/// Memory is exhausted.
class KLT_EXPORT KLTOutOfMemoryError : public KLTThrowable {
public:
    using KLTThrowable::KLTThrowable;

protected:
    [[noreturn]] void raise() override;
};

#endif
