#include "MoDiffFanOut.h"

#include <exception>

void MoDiffFanOut::comparisonNotification(MoDiffResult const& result) {
    std::exception_ptr firstError;
    for (MoDiffListener* const listener : m_listeners) {
        try {
            result.notifyListener(*listener);
        } catch (...) { // kept for the caller; the other listeners must not miss the result
            if (!firstError)
                firstError = std::current_exception();
        }
    }
    if (firstError)
        std::rethrow_exception(firstError);
}
