#include "I18NConverter.h"

#include "KLTAssert.h"
#include "MoUtf8.h"

#include <algorithm>
#include <strings.h>
#include <unicode/ucnv.h>
#include <unicode/utf16.h>

namespace {

/// Packs code units into a buffer that may be too small for all of them.
class UnitWriter {
public:
    UnitWriter(void* dest, int capacity)
        : m_begin(static_cast<char16_t*>(dest)), m_next(m_begin),
          m_end(m_begin + std::max(capacity, 0) / static_cast<int>(sizeof(char16_t))) {}

    bool put(char32_t code) {
        if (m_end - m_next < U16_LENGTH(code))
            return false;
        if (U_IS_BMP(code)) {
            *m_next++ = static_cast<char16_t>(code);
        } else {
            *m_next++ = static_cast<char16_t>(U16_LEAD(code));
            *m_next++ = static_cast<char16_t>(U16_TRAIL(code));
        }
        return true;
    }

    int count() const { return static_cast<int>(m_next - m_begin); }

private:
    char16_t* m_begin;
    char16_t* m_next;
    char16_t* m_end;
};

struct Bytes {
    char text[4];
    int length;
};

Bytes toUtf8(char32_t code) {
    auto const byte = [code](int shift, unsigned mark) { return static_cast<char>(mark | (code >> shift & 0x3FU)); };
    if (code < 0x80)
        return {{static_cast<char>(code)}, 1};
    if (MoUtf8::isInvalidByte(code))
        return {{static_cast<char>(code - MoUtf8::kInvalidBase)}, 1};
    if (code < 0x800)
        return {{byte(6, 0xC0), byte(0, 0x80)}, 2};
    if (code < 0x10000)
        return {{byte(12, 0xE0), byte(6, 0x80), byte(0, 0x80)}, 3};
    return {{byte(18, 0xF0), byte(12, 0x80), byte(6, 0x80), byte(0, 0x80)}, 4};
}

/// The code point at a position of a NUL-terminated text; a surrogate standing alone is returned as such.
char32_t codePointAt(char16_t const* text) {
    if (U16_IS_LEAD(text[0]) && U16_IS_TRAIL(text[1]))
        return static_cast<char32_t>(U16_GET_SUPPLEMENTARY(text[0], text[1]));
    return text[0];
}

struct ConverterCloser {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};

} // namespace

struct I18NConverter::Foreign {
    std::unique_ptr<UConverter, ConverterCloser> converter;
};

I18NConverter::I18NConverter(char const* encoding) {
    KLT_ASSERT(encoding);
    if (strcasecmp(encoding, "UTF-8") == 0 || strcasecmp(encoding, "UTF8") == 0)
        return;
    UErrorCode status = U_ZERO_ERROR;
    m_foreign = std::make_unique<Foreign>();
    m_foreign->converter.reset(ucnv_open(encoding, &status));
    KLT_ASSERT_NAMED(U_SUCCESS(status), "Encoding is known");
}

I18NConverter::~I18NConverter() = default;

int I18NConverter::toUnicode(void* dest, int destCapacity, char const* src, int srcLength, I18NErrorCodes*) const {
    if (m_foreign) {
        UErrorCode status = U_ZERO_ERROR;
        int const capacity = std::max(destCapacity, 0) / static_cast<int>(sizeof(char16_t));
        int const units = ucnv_toUChars(m_foreign->converter.get(), static_cast<char16_t*>(dest), capacity, src,
                                        srcLength, &status);
        return std::min(units, capacity);
    }
    UnitWriter writer(dest, destCapacity);
    auto const* text = reinterpret_cast<unsigned char const*>(src);
    unsigned char const* const end = text + std::max(srcLength, 0);
    while (text < end) {
        MoUtf8::Character const character = MoUtf8::decode(text, end);
        if (!writer.put(character.code))
            break;
        text += character.length;
    }
    return writer.count();
}

int I18NConverter::fromUnicode(char* dest, int destCapacity, void const* src, I18NErrorCodes*) const {
    if (destCapacity <= 0)
        return 0;
    int const room = destCapacity - 1;
    auto const* text = static_cast<char16_t const*>(src);
    int written = 0;
    if (m_foreign) {
        UErrorCode status = U_ZERO_ERROR;
        written = std::min(ucnv_fromUChars(m_foreign->converter.get(), dest, room, text, -1, &status), room);
    } else {
        while (*text) {
            char32_t const code = codePointAt(text);
            Bytes const bytes = toUtf8(code);
            if (room - written < bytes.length)
                break;
            std::copy_n(bytes.text, bytes.length, dest + written);
            written += bytes.length;
            text += U16_LENGTH(code);
        }
    }
    dest[written] = '\0';
    return written;
}
