#ifndef KLT_STD_EXCEPTION_ERROR_H
#define KLT_STD_EXCEPTION_ERROR_H

#include "KLTThrowable.h"

/// Wraps an exception of the standard library, so that it travels with a back-trace like the layer's own errors.
class KLT_EXPORT KLTStdExceptionError : public KLTThrowable {
public:
    /// Keeps a copy of the exception's message, not the exception.
    explicit KLTStdExceptionError(std::exception const& wrapped);

protected:
    [[noreturn]] void raise() override;
};

#endif
