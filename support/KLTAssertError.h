#ifndef KLT_ASSERT_ERROR_H
#define KLT_ASSERT_ERROR_H

#include "KLTThrowable.h"

/// A failed precondition. Its text is the source statement that failed, for example "KLT_ASSERT(listener);".
class KLT_EXPORT KLTAssertError : public KLTThrowable {
public:
    using KLTThrowable::KLTThrowable;

protected:
    [[noreturn]] void raise() override;
};

#endif
