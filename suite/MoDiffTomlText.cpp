#include "MoDiffTomlText.h"

#include <nlohmann/json.hpp>

/// The strings of TOML know the escapes that JSON has, but must not hold a DEL, which JSON leaves as it is.
std::string MoDiffTomlText::quoted(std::string_view text) {
    std::string result =
        nlohmann::json(std::string(text)).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    for (std::size_t place = result.find('\x7f'); place != std::string::npos; place = result.find('\x7f', place))
        result.replace(place, 1, "\\u007f");
    return result;
}

bool MoDiffTomlText::canHold(std::string_view text) {
    try {
        return text.find('\0') == std::string_view::npos && !nlohmann::json(std::string(text)).dump().empty();
    } catch (nlohmann::json::type_error const&) { // not UTF-8
        return false;
    }
}
