#include "MoDiffMimeText.h"

#include "MoDiffBase64.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <optional>

namespace {

std::string lowerCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return result;
}

std::optional<unsigned> valueOf(std::string_view digits) {
    if (digits.size() != 2 || !std::isxdigit(static_cast<unsigned char>(digits[0])) ||
        !std::isxdigit(static_cast<unsigned char>(digits[1])))
        return std::nullopt;
    return static_cast<unsigned>(std::strtoul(std::string(digits).c_str(), nullptr, 16));
}

std::string fromQuotedPrintable(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        std::string_view const rest = text.substr(at, 3);
        std::optional<unsigned> const value = rest[0] == '=' ? valueOf(rest.substr(1)) : std::nullopt;
        if (value) {
            bytes += static_cast<char>(*value);
            at += 2;
        } else if (rest.substr(0, 2) == "=\n" || rest == "=\r\n") {
            at += rest[1] == '\n' ? 1 : 2;
        } else {
            bytes += text[at];
        }
    }
    return bytes;
}

/// Behind the empty line that ends the headers; the text's end without one.
std::size_t bodyBegin(std::string_view text, std::size_t from) {
    for (std::size_t at = from; (at = text.find('\n', at)) != std::string_view::npos; ++at) {
        std::size_t const next = at + 1 < text.size() && text[at + 1] == '\r' ? at + 2 : at + 1;
        if (next < text.size() && text[next] == '\n')
            return next + 1;
    }
    return text.size();
}

/// The parameter of a multipart type that parts are separated by; "" without one.
std::string boundaryOf(std::string_view headers) {
    std::size_t const name = lowerCase(headers).find("boundary=");
    if (name == std::string::npos)
        return "";
    std::string_view value = headers.substr(name + 9);
    bool const isQuoted = !value.empty() && value.front() == '"';
    value.remove_prefix(isQuoted ? 1 : 0);
    return "--" + std::string(value.substr(0, value.find_first_of(isQuoted ? "\"" : "; \r\n")));
}

std::string decoded(std::string_view body, std::string const& headers) {
    if (headers.find("\ncontent-transfer-encoding: base64") != std::string::npos)
        return MoDiffBase64::decode(body);
    if (headers.find("\ncontent-transfer-encoding: quoted-printable") != std::string::npos)
        return fromQuotedPrintable(body);
    return std::string(body);
}

} // namespace

std::string MoDiffMimeText::firstHtml(std::string_view archive) {
    std::string const boundary = boundaryOf(archive.substr(0, bodyBegin(archive, 0)));
    for (std::size_t part = 0; part < archive.size();) {
        std::size_t const body = bodyBegin(archive, part);
        // The line end before a boundary belongs to it; it is the headers' own when the part is empty.
        std::size_t const found = boundary.empty() ? std::string_view::npos : archive.find("\n" + boundary, body - 1);
        std::size_t const end = std::min(found, archive.size());
        std::string const headers = "\n" + lowerCase(archive.substr(part, body - part));
        if (headers.find("\ncontent-type: text/html") != std::string::npos)
            return decoded(archive.substr(body, std::max(end, body) - body), headers);
        std::size_t const boundaryEnd =
            std::min(archive.find('\n', std::min(end + 1, archive.size())), archive.size());
        part = std::min(boundaryEnd + 1, archive.size());
    }
    return "";
}
