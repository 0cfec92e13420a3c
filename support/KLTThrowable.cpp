#include "KLTThrowable.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace {

char const* orEmpty(char const* text) {
    return text ? text : "";
}

} // namespace

KLTThrowable::KLTThrowable(long code, char const* text) : m_code(code), m_text(orEmpty(text)) {
}

void KLTThrowable::hurl(KLTFileLocation const& where, char const* detail, char const* tag) {
    addBackTrace(where, detail, tag);
    raise();
    std::abort(); // not reached: raise() throws
}

void KLTThrowable::addBackTrace(KLTFileLocation const& where, char const* detail, char const* tag) {
    try {
        m_backTrace.push_back(KLTBackTraceEntry{where, orEmpty(detail), orEmpty(tag)});
    } catch (std::bad_alloc const&) {
        // An out-of-memory error on its way must not be replaced by a second one.
        return;
    }
}

void KLTThrowable::raise() {
    throw std::move(*this);
}
