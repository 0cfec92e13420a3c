#include "MoDiffRecordText.h"

#include "MoUtf8.h"

#include <stdexcept>

namespace {

char const kDigits[] = "0123456789abcdef";

void appendHex(std::string& text, unsigned char value) {
    text += kDigits[value >> 4];
    text += kDigits[value & 15];
}

void appendAscii(std::string& json, char character) {
    switch (character) {
    case '"':
        json += "\\\"";
        break;
    case '\\': // two in the value, each of which JSON doubles
        json += "\\\\\\\\";
        break;
    case '\n':
        json += "\\n";
        break;
    case '\r':
        json += "\\r";
        break;
    case '\t':
        json += "\\t";
        break;
    default:
        json += "\\u00";
        appendHex(json, static_cast<unsigned char>(character));
    }
}

bool isPlain(char character) {
    return character >= ' ' && character <= '~' && character != '"' && character != '\\';
}

int hexDigit(char character) {
    std::size_t const value = std::string_view(kDigits).find(character);
    return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

} // namespace

void MoDiffRecordText::appendQuoted(std::string& json, std::string_view bytes) {
    json += '"';
    for (std::size_t at = 0; at < bytes.size();) {
        std::size_t const plainBegin = at;
        while (at < bytes.size() && isPlain(bytes[at]))
            ++at;
        json.append(bytes, plainBegin, at - plainBegin);
        if (at == bytes.size())
            break;
        auto const* const begin = reinterpret_cast<unsigned char const*>(bytes.data());
        MoUtf8::Character const character = MoUtf8::decode(begin + at, begin + bytes.size());
        if (character.code < 0x80) {
            appendAscii(json, bytes[at]);
        } else if (MoUtf8::isInvalidByte(character.code)) {
            json += "\\\\x";
            appendHex(json, begin[at]);
        } else {
            json.append(bytes, at, character.length);
        }
        at += character.length;
    }
    json += '"';
}

std::string MoDiffRecordText::quoted(std::string_view bytes) {
    std::string json;
    appendQuoted(json, bytes);
    return json;
}

std::string MoDiffRecordText::bytesOf(std::string_view value) {
    std::string bytes;
    for (std::size_t at = 0; at < value.size(); ++at) {
        if (value[at] != '\\') {
            bytes += value[at];
            continue;
        }
        std::string_view const escape = value.substr(at, 4);
        if (escape.substr(0, 2) == "\\\\") {
            bytes += '\\';
            ++at;
        } else if (escape.size() == 4 && escape[1] == 'x' && hexDigit(escape[2]) >= 0 && hexDigit(escape[3]) >= 0) {
            bytes += static_cast<char>(hexDigit(escape[2]) * 16 + hexDigit(escape[3]));
            at += 3;
        } else {
            throw std::invalid_argument("a backslash stands before neither a backslash nor xHH");
        }
    }
    return bytes;
}
