#include "MoDiffBase64.h"

#include <cstdint>

namespace {

std::string_view const kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

} // namespace

std::string MoDiffBase64::encode(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        std::uint32_t group = 0;
        for (std::size_t index = at; index < at + 3; ++index)
            group = group << 8 | (index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0U);
        for (unsigned letter = 0; letter < 4; ++letter)
            text += at + letter > bytes.size() ? '=' : kLetters[group >> (18 - 6 * letter) & 63];
    }
    return text;
}

std::string MoDiffBase64::decode(std::string_view text) {
    std::string bytes;
    std::uint32_t group = 0;
    unsigned bits = 0;
    for (char const letter : text.substr(0, text.find('='))) {
        std::size_t const value = kLetters.find(letter);
        if (value == std::string_view::npos)
            continue;
        group = group << 6 | static_cast<std::uint32_t>(value);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>(group >> bits & 0xFF);
        }
    }
    return bytes;
}
