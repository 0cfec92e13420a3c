#ifndef KLT_ASSERT_H
#define KLT_ASSERT_H

#include "KLTExport.h"

/// Raises a KLTAssertError with code 0, the text and one back-trace entry tagged "KLT_THROW".
/// @param text       the failed statement
/// @param sourceFile a module name, or a source path of which directory and extension are dropped
[[noreturn]] KLT_EXPORT void KLTRaiseAssertion(char const* text, char const* sourceFile, int line);

/// Raises a KLTAssertError unless the condition holds; its text is this statement as it stands in the source,
/// macros in the condition unexpanded. The condition may hold commas outside parentheses.
#define KLT_ASSERT(...) KLT_ASSERT_AT(__FILE__, __LINE__, "KLT_ASSERT(" #__VA_ARGS__ ");", __VA_ARGS__)

/// The same with a name (a string literal) that says what was expected.
#define KLT_ASSERT_NAMED(condition, name)                                                                            \
    KLT_ASSERT_AT(__FILE__, __LINE__, "KLT_ASSERT_NAMED(" #condition ", " #name ");", condition)

/// The same for assertions whose text, module and line are part of the interface and stay as they are wherever the
/// statement stands.
#define KLT_ASSERT_AT(module, line, text, ...)                                                                       \
    do {                                                                                                             \
        if (!(__VA_ARGS__))                                                                                          \
            KLTRaiseAssertion(text, module, line);                                                                   \
    } while (false)

#endif
