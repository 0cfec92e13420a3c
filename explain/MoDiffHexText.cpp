#include "MoDiffHexText.h"

#include <algorithm>
#include <cstdio>

namespace {

std::size_t const kRow = 16;

std::string offsetOf(std::size_t offset) {
    char text[24];
    std::snprintf(text, sizeof text, "%08zx", offset);
    return text;
}

std::string hexOf(unsigned char byte) {
    return {"0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15]};
}

/// One row of a side: offset, bytes, the same bytes as characters.
MoDiffStyledLine row(std::string_view file, std::string_view other, std::size_t offset, char const* sign,
                     MoDiffStyle plain, MoDiffStyle mark) {
    MoDiffStyledLine line = {{plain, sign + offsetOf(offset) + " "}};
    std::string characters = "  ";
    for (std::size_t at = offset; at < offset + kRow; ++at) {
        if (at >= file.size()) {
            line.push_back({plain, "   "});
            continue;
        }
        bool const differs = at >= other.size() || file[at] != other[at];
        line.push_back({plain, " "});
        line.push_back({differs ? mark : plain, hexOf(static_cast<unsigned char>(file[at]))});
        characters += file[at] >= ' ' && file[at] <= '~' ? file[at] : '.';
    }
    line.push_back({plain, characters});
    return line;
}

} // namespace

void MoDiffHexText::write(MoDiffBothSides<std::string_view> const& files,
                          std::vector<MoDiffPlacedChange> const& changes, std::size_t mostRows,
                          std::function<void(MoDiffStyledLine const&)> const& sink) {
    std::size_t next = 0; // the offset of the first row that is not shown yet
    std::size_t rows = 0;
    for (MoDiffPlacedChange const& placed : changes) {
        std::size_t const end = std::max(placed.file.master.end, placed.file.actual.end);
        std::size_t const first = std::max(next, placed.file.master.begin / kRow * kRow);
        for (std::size_t offset = first; offset < end; offset += kRow) {
            next = offset + kRow;
            if (++rows > mostRows)
                continue;
            if (offset < files.master.size())
                sink(row(files.master, files.actual, offset, "-", MoDiffStyle::eRemoved, MoDiffStyle::eRemovedMark));
            if (offset < files.actual.size())
                sink(row(files.actual, files.master, offset, "+", MoDiffStyle::eAdded, MoDiffStyle::eAddedMark));
        }
    }
    if (rows > mostRows)
        sink({{MoDiffStyle::eNote, std::to_string(rows - mostRows) + " more rows of 16 bytes differ"}});
}
