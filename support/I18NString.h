#ifndef I18N_STRING_H
#define I18N_STRING_H

#include "KLTExport.h"

#include <string>

/// A Unicode string made from 8-bit text. A value type.
class KLT_EXPORT I18NString {
public:
    /// @param text     not null
    /// @param encoding the text's encoding, as for I18NConverter
    /// @param length   in bytes; -1 when the text is NUL-terminated
    /// The last two arguments have no effect; pass null.
    I18NString(char const* text, char const* encoding, int length, char* (*fallback)(void*, char*, int, int*),
               void* fallbackData);

    /// The text as UTF-16; valid as long as this object.
    std::u16string const& getUnicode() const { return m_text; }
    /// The text as UTF-8.
    std::string toUtf8() const;

private:
    std::u16string m_text;
};

/// The name of the platform's default 8-bit encoding: the locale's, or "UTF-8", which keeps every byte, where
/// the locale knows only ASCII or an encoding that can't be converted.
/// The text lives until the next call of setlocale().
KLT_EXPORT char const* I18NGetPlatformDefaultEncoding();

#endif
