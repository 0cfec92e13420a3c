#include "MoDiffStyledText.h"

#include "MoDiffShownText.h"

#include <string_view>

namespace {

/// What selects the colour of a style; "" for the terminal's own.
char const* colourOf(MoDiffStyle style) {
    switch (style) {
    case MoDiffStyle::eRemoved:
        return "31";
    case MoDiffStyle::eRemovedMark:
        return "31;7";
    case MoDiffStyle::eAdded:
        return "32";
    case MoDiffStyle::eAddedMark:
        return "32;7";
    case MoDiffStyle::eHidden:
        return "90";
    case MoDiffStyle::ePlace:
        return "36";
    case MoDiffStyle::eLabel:
        return "1";
    case MoDiffStyle::eNote:
        return "33";
    default:
        return "";
    }
}

} // namespace

std::string MoDiffStyledText::shown(MoDiffStyledLine const& line, bool colours) {
    std::string text;
    for (MoDiffSpan const& span : line) {
        std::string const colour = colours && !span.text.empty() ? colourOf(span.style) : "";
        text += colour.empty() ? span.text : "\x1b[" + colour + "m" + span.text + "\x1b[0m";
    }
    return text;
}

std::vector<MoDiffStyledLine> MoDiffStyledText::wrapped(MoDiffStyledLine const& line, std::size_t columns) {
    std::vector<MoDiffStyledLine> rows(1);
    std::size_t room = columns;
    for (MoDiffSpan const& span : line) {
        std::string_view rest = span.text;
        while (!rest.empty()) {
            MoDiffShownText::Fit fit = MoDiffShownText::fit(rest, room);
            if (fit.bytes == 0 && room == columns) // wider than the screen
                fit = {rest.size(), columns};
            rows.back().push_back({span.style, std::string(rest.substr(0, fit.bytes))});
            rest.remove_prefix(fit.bytes);
            room -= fit.columns;
            if (!rest.empty()) {
                rows.emplace_back();
                room = columns;
            }
        }
    }
    return rows;
}
