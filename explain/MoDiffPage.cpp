#include "MoDiffPage.h"

#include "MoDiffBase64.h"
#include "MoDiffHtml.h"
#include "MoDiffPageAssets.h"
#include "MoDiffSha256.h"

#include <cstdlib>
#include <cstring>

namespace {

/// What a policy knows an element's text by.
std::string sourceOf(char const* text) {
    MoDiffSha256 sum;
    sum.add(text, std::strlen(text));
    std::string const digits = sum.getDigits();
    std::string bytes;
    for (std::size_t at = 0; at < digits.size(); at += 2)
        bytes += static_cast<char>(std::strtoul(digits.substr(at, 2).c_str(), nullptr, 16));
    return "'sha256-" + MoDiffBase64::encode(bytes) + "'";
}

/// A frame's document may do what both policies allow, so that styles in it need 'unsafe-inline' here as well, and a
/// hash beside that would take it back. Nothing that a style could ask for may load either way.
std::string policyOf(bool hasFrames) {
    static std::string const script = sourceOf(kMoDiffPageScript);
    static std::string const style = sourceOf(kMoDiffPageStyle);
    return "default-src 'none'; script-src " + script + "; style-src " +
           (hasFrames ? "'unsafe-inline'; img-src data:" : style) + "; base-uri 'none'; form-action 'none'";
}

} // namespace

std::string MoDiffPage::toHtml() const {
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"" +
           policyOf(hasFrames) +
           "\">\n<meta http-equiv=\"x-dns-prefetch-control\" content=\"off\">\n"
           "<meta name=\"referrer\" content=\"no-referrer\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
           MoDiffHtml::bytes(title) + "</title>\n<style>" + kMoDiffPageStyle + "</style>\n<script>" +
           kMoDiffPageScript + "</script>\n</head>\n<body class=\"" + kind + "\">\n<a class=\"skip\" href=\"#" +
           skipTarget + "\">" + skipWords + "</a>\n" + body + "</body>\n</html>\n";
}
