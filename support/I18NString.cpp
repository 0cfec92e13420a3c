#include "I18NString.h"

#include "I18NConverter.h"
#include "KLTAssert.h"

#include <climits>
#include <cstring>
#include <langinfo.h>
#include <unicode/ucnv.h>

namespace {

bool isKnown(char const* encoding) {
    UErrorCode status = U_ZERO_ERROR;
    ucnv_close(ucnv_open(encoding, &status));
    return U_SUCCESS(status);
}

} // namespace

I18NString::I18NString(char const* text, char const* encoding, int length, char* (*)(void*, char*, int, int*),
                       void*) {
    KLT_ASSERT(text);
    std::size_t const bytes = length < 0 ? std::strlen(text) : static_cast<std::size_t>(length);
    KLT_ASSERT_NAMED(bytes < INT_MAX / 8, "Text fits the converter's capacity");
    // No encoding yields more code units than twice its bytes.
    m_text.resize(2 * bytes);
    int const capacity = static_cast<int>(m_text.size() * sizeof(char16_t));
    int const units =
        I18NConverter(encoding).toUnicode(m_text.data(), capacity, text, static_cast<int>(bytes), nullptr);
    m_text.resize(static_cast<std::size_t>(units));
}

std::string I18NString::toUtf8() const {
    std::string text(3 * m_text.size() + 1, '\0');
    int const capacity = static_cast<int>(text.size());
    int const bytes = I18NConverter("UTF-8").fromUnicode(text.data(), capacity, m_text.c_str(), nullptr);
    text.resize(static_cast<std::size_t>(bytes));
    return text;
}

char const* I18NGetPlatformDefaultEncoding() {
    char const* const codeset = nl_langinfo(CODESET);
    bool const onlyAscii = !*codeset || std::strcmp(codeset, "ANSI_X3.4-1968") == 0;
    return onlyAscii || !isKnown(codeset) ? "UTF-8" : codeset;
}
