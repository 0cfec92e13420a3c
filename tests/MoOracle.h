#ifndef MO_ORACLE_H
#define MO_ORACLE_H

#include <optional>
#include <string>
#include <unicode/uregex.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

/// What deleting matches has to give, for tests and fuzz targets: kept apart from the library, with a conversion of
/// its own and direct calls of ICU. A byte that is not part of valid UTF-8 becomes a low surrogate of its own.
namespace MoOracle {

inline std::u16string toUtf16(std::string const& text) {
    std::u16string units;
    auto const* const bytes = reinterpret_cast<unsigned char const*>(text.data());
    auto const length = static_cast<int>(text.size());
    for (int i = 0; i < length;) {
        UChar32 code = 0;
        int next = i;
        U8_NEXT(bytes, next, length, code);
        if (code < 0) {
            units += static_cast<char16_t>(0xDC00 + static_cast<unsigned char>(text[static_cast<std::size_t>(i)]));
            next = i + 1;
        } else if (U_IS_BMP(code)) {
            units += static_cast<char16_t>(code);
        } else {
            units += {static_cast<char16_t>(U16_LEAD(code)), static_cast<char16_t>(U16_TRAIL(code))};
        }
        i = next;
    }
    return units;
}

inline void appendUtf8(std::string& text, UChar32 code) {
    unsigned char bytes[U8_MAX_LENGTH];
    int count = 0;
    U8_APPEND_UNSAFE(bytes, count, code);
    text.append(bytes, bytes + count);
}

inline std::string toUtf8(std::u16string const& units) {
    std::string text;
    auto const length = static_cast<int>(units.size());
    for (int i = 0; i < length;) {
        UChar32 code = 0;
        U16_NEXT(units.data(), i, length, code);
        if (code >= 0xDC80 && code <= 0xDCFF) {
            text += static_cast<char>(code - 0xDC00);
            continue;
        }
        appendUtf8(text, code);
    }
    return text;
}

/// An expression that ICU runs on whole texts.
class Expression {
public:
    explicit Expression(std::string const& regex) {
        UErrorCode status = U_ZERO_ERROR;
        m_regex.adoptInstead(uregex_openC(regex.c_str(), 0, nullptr, &status));
        uregex_setTimeLimit(m_regex.getAlias(), 20, &status);
    }
    bool isWellFormed() const { return m_regex.isValid(); }
    /// Whether the last text took too long for a comparison.
    bool hasTimedOut() const { return m_hasTimedOut; }

    /// The text without the matches; nothing when ICU gives up.
    std::optional<std::string> deleteMatches(std::string const& text) const {
        std::u16string const input = toUtf16(text);
        std::u16string output(input.size() + 1, u'\0');
        UErrorCode status = U_ZERO_ERROR;
        uregex_setText(m_regex.getAlias(), input.data(), static_cast<int>(input.size()), &status);
        int const length =
            uregex_replaceAll(m_regex.getAlias(), u"", 0, output.data(), static_cast<int>(output.size()), &status);
        m_hasTimedOut = status == U_REGEX_TIME_OUT;
        if (U_FAILURE(status))
            return std::nullopt;
        output.resize(static_cast<std::size_t>(length));
        return toUtf8(output);
    }

private:
    icu::LocalURegularExpressionPointer m_regex;
    mutable bool m_hasTimedOut = false;
};

} // namespace MoOracle

#endif
