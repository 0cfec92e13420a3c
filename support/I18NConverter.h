#ifndef I18N_CONVERTER_H
#define I18N_CONVERTER_H

#include "KLTExport.h"

#include <memory>
#include <string>

/// An optional record of conversion errors; this library always passes null.
struct I18NErrorCodes;

/// Converts between one named 8-bit encoding and UTF-16 in the machine's byte order.
///
/// In UTF-8 no byte is ever lost: a byte that is not part of valid UTF-8 becomes one code unit of its own (a low
/// surrogate standing alone, U+DC80 to U+DCFF) and turns into the same byte again on the way back. Other encodings
/// substitute what they cannot express. Used from one thread at a time.
class KLT_EXPORT I18NConverter {
public:
    /// @param encoding a name such as "UTF-8" or "ISO-8859-1"; not null. An unknown one raises KLTAssertError.
    explicit I18NConverter(char const* encoding);
    ~I18NConverter();
    I18NConverter(I18NConverter const&) = delete;
    I18NConverter& operator=(I18NConverter const&) = delete;

    /// Converts to UTF-16 without terminating the result. What does not fit is cut at a whole character.
    /// @param dest         receives the code units; aligned for char16_t
    /// @param destCapacity in bytes
    /// @param src          the text; may hold NUL bytes
    /// @param srcLength    in bytes
    /// @param errors       pass null
    /// @return the number of code units written
    int toUnicode(void* dest, int destCapacity, char const* src, int srcLength, I18NErrorCodes* errors) const;

    /// Converts a NUL-terminated UTF-16 text and terminates the result. What does not fit, the terminator included,
    /// is cut at a whole character; with a capacity of 0 or less nothing is written.
    /// @param dest         receives the bytes
    /// @param destCapacity in bytes
    /// @param src          aligned for char16_t
    /// @param errors       pass null
    /// @return the number of bytes written, the terminator not counted
    int fromUnicode(char* dest, int destCapacity, void const* src, I18NErrorCodes* errors) const;

private:
    struct Foreign; // ICU's converter, for encodings other than UTF-8
    std::unique_ptr<Foreign> m_foreign;
};

#endif
