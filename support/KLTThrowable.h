#ifndef KLT_THROWABLE_H
#define KLT_THROWABLE_H

#include "KLTExport.h"
#include "KLTFileLocation.h"

#include <exception>
#include <list>
#include <string>

/// One step of an error's way: where it was raised or passed on, an optional detail and what happened there.
struct KLTBackTraceEntry {
    KLTFileLocation location;
    std::string text; ///< the detail; empty when none was given
    std::string tag;  ///< "KLT_THROW" or "KLT_RETHROW"
};

/// Base class of the support layer's errors.
///
/// Raised with hurl() and caught by reference. Each handler that passes an error on may add an entry to the
/// back-trace and then raise the same object again with `throw;`. An object is used by one thread at a time.
class KLT_EXPORT KLTThrowable : public std::exception {
public:
    /// @param code a number for the catcher; 0 in this library
    /// @param text what went wrong; copied, null counts as the empty text
    KLTThrowable(long code, char const* text);

    /// Records the place as the back-trace's next entry and raises this error as its own dynamic class.
    /// The thrown object takes over this object's contents, which is empty afterwards.
    /// @param detail an addition to the entry; may be null
    /// @param tag    what happens here, "KLT_THROW" by convention; may be null
    [[noreturn]] void hurl(KLTFileLocation const& where, char const* detail, char const* tag);

    /// Appends one back-trace entry. When no memory is left for the entry it is dropped: the error itself counts.
    void addBackTrace(KLTFileLocation const& where, char const* detail, char const* tag);

    /// The entries, first raised first; valid as long as this object.
    std::list<KLTBackTraceEntry> const& getBackTrace() const { return m_backTrace; }
    long getCode() const { return m_code; }
    /// The text given at construction; never null, valid as long as this object.
    char const* getText() const { return m_text.c_str(); }
    char const* what() const noexcept override { return m_text.c_str(); }

protected:
    /// Throws *this, moved, as the class that overrides it. Every class that can be raised has its own.
    [[noreturn]] virtual void raise();

private:
    long m_code;
    std::string m_text;
    std::list<KLTBackTraceEntry> m_backTrace;
};

#endif
