#include "MoDiffHtml.h"

#include "MoDiffShownText.h"
#include "MoUtf8.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

namespace {

char const kReplacement[] = "\xEF\xBF\xBD"; // U+FFFD

/// What stands for a character in text and in values of attributes; null when it stands for itself.
char const* entityOf(char letter) {
    switch (letter) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&#39;";
    default:
        return nullptr;
    }
}

std::string withReferences(std::string_view text) {
    std::string result;
    result.reserve(text.size() + text.size() / 8);
    for (char const letter : text) {
        if (char const* const entity = entityOf(letter))
            result += entity;
        else
            result += letter;
    }
    return result;
}

struct Element {
    char const* before;
    char const* behind;
};

Element elementOf(MoDiffStyle style) {
    switch (style) {
    case MoDiffStyle::eRemovedMark:
        return {"<del>", "</del>"};
    case MoDiffStyle::eAddedMark:
        return {"<ins>", "</ins>"};
    case MoDiffStyle::eHidden:
        return {"<span class=\"hidden\">", "</span>"};
    case MoDiffStyle::eNote:
        return {"<span class=\"note\">", "</span>"};
    default:
        return {"", ""};
    }
}

/// Whether a tag begins here that could act in a frame in which no script runs and nothing may load: links resolve
/// and connect ahead of time, metas go elsewhere.
bool beginsActiveTag(std::string_view text) {
    for (char const* const tag : {"<link", "<meta", "<base"})
        if (text.size() >= 5 && strncasecmp(text.data(), tag, 5) == 0)
            return true;
    return false;
}

} // namespace

std::string MoDiffHtml::bytes(std::string_view bytes) {
    return withReferences(MoDiffShownText::escaped(bytes));
}

std::string MoDiffHtml::words(std::string_view words) {
    return withReferences(MoDiffShownText::printable(words));
}

std::string MoDiffHtml::title(std::string_view text) {
    std::string_view const arrow = "` -> `";
    std::size_t const middle = text.find(arrow);
    bool const isChange = middle != std::string_view::npos && middle > 0 && text.front() == '`' &&
                          text.back() == '`' && text.find(arrow, middle + 1) == std::string_view::npos;
    if (!isChange)
        return words(text);
    std::string_view const actual = text.substr(middle + arrow.size());
    auto const code = [](std::string_view part, char const* kind) {
        return part.empty() ? std::string("nothing")
                            : std::string("<code class=\"") + kind + "\">" + words(part) + "</code>";
    };
    return code(text.substr(1, middle - 1), "old") + " <span class=\"arrow\">→</span> " +
           code(actual.substr(0, actual.size() - 1), "new");
}

std::string MoDiffHtml::lines(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        std::size_t const end = std::min(text.find('\n'), text.size());
        std::size_t const returns = end > 0 && end < text.size() && text[end - 1] == '\r' ? 1 : 0;
        result += (result.empty() ? "" : "\n") + bytes(text.substr(0, end - returns));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

std::string MoDiffHtml::line(MoDiffStyledLine const& line) {
    std::string result;
    for (MoDiffSpan const& span : line) {
        if (!span.folded.empty()) {
            result += "<details class=\"hidden\"><summary>" + words(span.text) + "</summary>" + words(span.folded) +
                      "</details>";
            continue;
        }
        Element const element = elementOf(span.style);
        result += element.before + words(span.text) + element.behind;
    }
    return result;
}

std::string MoDiffHtml::sourceDocument(std::string_view document) {
    std::string result;
    result.reserve(document.size() + document.size() / 8);
    auto const* const begin = reinterpret_cast<unsigned char const*>(document.data());
    for (std::size_t at = 0; at < document.size();) {
        MoUtf8::Character const character = MoUtf8::decode(begin + at, begin + document.size());
        if (MoUtf8::isInvalidByte(character.code) || character.code == 0) {
            result += kReplacement;
        } else if (document[at] == '&' || document[at] == '"') {
            result += entityOf(document[at]);
        } else {
            result += document.substr(at, character.length);
            result += document[at] == '<' && beginsActiveTag(document.substr(at, 5)) ? "x-" : "";
        }
        at += character.length;
    }
    return result;
}

std::string MoDiffHtml::number(std::uint64_t count) {
    std::string digits = std::to_string(count);
    for (std::size_t at = digits.size(); at > 3; at -= 3)
        digits.insert(at - 3, ",");
    return digits;
}

std::string MoDiffHtml::count(std::uint64_t count, char const* what) {
    return number(count) + " " + what + (count == 1 ? "" : "s");
}
