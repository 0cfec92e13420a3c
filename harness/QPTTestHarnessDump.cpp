// The hex dump of QPTTestHarness.
#include "QPTTestHarness.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

unsigned long const kColumns = 16;
int const kRowLimit = 10;

/// One line of a row: its hex part and its character part.
struct RowLine {
    std::string hex;
    std::string text;

    void addByte(unsigned char const* buffer, unsigned long index) {
        if (!buffer) {
            hex = "  (null)";
            return;
        }
        char column[8];
        std::snprintf(column, sizeof column, "  %02X", buffer[index]);
        hex += column;
        text += buffer[index] >= 32 && buffer[index] <= 126 ? static_cast<char>(buffer[index]) : '.';
    }
    void addMark(bool differs) {
        hex += differs ? "  ^^" : "    ";
        text += differs ? '^' : ' ';
    }
    std::string complete(char const* label, std::string const& padding) const {
        return label + hex + padding + "     " + text + "\n";
    }
};

/// Up to 16 bytes of the two buffers, of which either may be null.
struct Row {
    unsigned char const* actual;
    unsigned char const* expected;
    unsigned long index;
    unsigned long columns;

    bool isNull() const { return !actual || !expected; }
    bool differsAt(unsigned long at) const { return isNull() || actual[at] != expected[at]; }
    bool differs() const { return isNull() || std::memcmp(actual + index, expected + index, columns) != 0; }
    unsigned long countUnequal() const;
    std::string format(unsigned long long offset) const;
};

unsigned long Row::countUnequal() const {
    unsigned long count = 0;
    for (unsigned long at = index; at < index + columns; ++at)
        count += differsAt(at) ? 1 : 0;
    return count;
}

std::string Row::format(unsigned long long offset) const {
    RowLine actualLine;
    RowLine expectedLine;
    RowLine marks;
    for (unsigned long at = index; at < index + columns; ++at) {
        actualLine.addByte(actual, at);
        expectedLine.addByte(expected, at);
        marks.addMark(differsAt(at));
    }
    char place[64];
    std::snprintf(place, sizeof place, "Offset: %#llX (%llu)\n", offset + index, offset + index);
    std::string const padding(4 * (kColumns - columns), ' ');
    return place + actualLine.complete("  actual:", padding) + expectedLine.complete("expected:", padding) +
           marks.complete("         ", padding);
}

} // namespace

void QPTTestHarness::dumpBuffer(unsigned char const* actual, unsigned char const* expected, unsigned long length,
                                unsigned long offset) {
    dumpRows(actual, expected, length, offset);
}

void QPTTestHarness::dumpRows(unsigned char const* actual, unsigned char const* expected, unsigned long length,
                              unsigned long long offset) {
    if (m_logLevel < eLogNormal)
        return;
    unsigned long index = 0;
    unsigned long unequal = 0;
    int rowsLeft = kRowLimit;
    while (index < length && rowsLeft > 0) {
        Row const row = {actual, expected, index, std::min(kColumns, length - index)};
        index += row.columns;
        if (!row.differs())
            continue;
        unequal += row.countUnequal();
        writeLog(row.format(offset).c_str(), eLogNormal, 1);
        if (row.isNull())
            break;
        if (m_logLevel < eLogDetailed)
            --rowsLeft;
    }
    char total[96];
    std::snprintf(total, sizeof total, "%lu bytes compared.  A total of %lu bytes unequal\n", index, unequal);
    writeLog(total, eLogNormal, 1);
}
