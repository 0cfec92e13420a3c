// The rows that a dump of two buffers writes, read back, must hold the bytes of the buffers and mark the differences.
// Input: the log level, the offset, two texts of which the longer one is cut (see MoFuzzInput).

#include "MoFuzz.h"
#include "QPTTestHarness.h"

#include <iostream>
#include <sstream>
#include <vector>

namespace {

std::size_t const kLongest = 1024; // well beyond ten rows of 16 bytes

/// The log while it lives: the console goes into a text.
class Log {
public:
    Log() : m_console(std::cout.rdbuf(m_text.rdbuf())) {}
    ~Log() { std::cout.rdbuf(m_console); }
    Log(Log const&) = delete;
    Log& operator=(Log const&) = delete;

    std::string line() {
        std::string line;
        MO_FUZZ_REQUIRE(std::getline(m_text, line) && !m_text.eof());
        return line;
    }
    bool isAtEnd() { return m_text.peek() == std::char_traits<char>::eof(); }

private:
    std::stringstream m_text;
    std::streambuf* m_console;
};

/// Two buffers of one length, exactly as long as that.
struct Buffers {
    std::vector<unsigned char> actual;
    std::vector<unsigned char> expected;

    bool differAt(std::size_t at) const { return actual[at] != expected[at]; }
    std::size_t unequal(std::size_t from, std::size_t to) const {
        std::size_t count = 0;
        for (std::size_t at = from; at < to; ++at)
            count += differAt(at) ? 1 : 0;
        return count;
    }
};

/// Checks one line of a row from its parts: label, hex part padded to 16 columns, blanks, character part.
void checkLine(std::string const& line, std::string const& label, std::string hex, std::string const& characters) {
    hex.resize(64, ' ');
    MO_FUZZ_REQUIRE(line == label + hex + "     " + characters);
}

void checkBytes(std::string const& line, std::string const& label, std::vector<unsigned char> const& bytes,
                std::size_t from, std::size_t to) {
    static char const kDigits[] = "0123456789ABCDEF";
    std::string hex;
    std::string characters;
    for (std::size_t at = from; at < to; ++at) {
        hex += std::string("  ") + kDigits[bytes[at] / 16] + kDigits[bytes[at] % 16];
        characters += bytes[at] < ' ' || bytes[at] > '~' ? '.' : static_cast<char>(bytes[at]);
    }
    checkLine(line, label, hex, characters);
}

void checkRow(Log& log, Buffers const& buffers, std::size_t from, std::size_t to, unsigned long offset) {
    std::string const place = log.line();
    std::size_t const decimal = place.find(" (");
    MO_FUZZ_REQUIRE(place.compare(0, 8, "Offset: ") == 0 && decimal != std::string::npos && place.back() == ')');
    unsigned long long const absolute = static_cast<unsigned long long>(offset) + from;
    MO_FUZZ_REQUIRE(std::strtoull(place.c_str() + 8, nullptr, 16) == absolute);
    MO_FUZZ_REQUIRE(std::strtoull(place.c_str() + decimal + 2, nullptr, 10) == absolute);
    MO_FUZZ_REQUIRE(absolute == 0 || place.compare(8, 2, "0X") == 0);
    checkBytes(log.line(), "  actual:", buffers.actual, from, to);
    checkBytes(log.line(), "expected:", buffers.expected, from, to);
    std::string marks;
    std::string characters;
    for (std::size_t at = from; at < to; ++at) {
        marks += buffers.differAt(at) ? "  ^^" : "    ";
        characters += buffers.differAt(at) ? '^' : ' ';
    }
    checkLine(log.line(), "         ", marks, characters);
}

void checkDump(Log& log, Buffers const& buffers, int rowLimit, unsigned long offset) {
    std::size_t const length = buffers.actual.size();
    std::size_t at = 0;
    for (int rows = 0; at < length && rows < rowLimit;) {
        std::size_t const end = std::min(at + 16, length);
        if (buffers.unequal(at, end) > 0) {
            checkRow(log, buffers, at, end, offset);
            ++rows;
        }
        at = end;
    }
    std::ostringstream total;
    total << at << " bytes compared.  A total of " << buffers.unequal(0, at) << " bytes unequal";
    MO_FUZZ_REQUIRE(log.line() == total.str());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size > kLongest)
        return 0;
    MoFuzzInput input(data, size);
    auto const level = static_cast<eLogLevel>(input.byte() % 5);
    unsigned long offset = 0;
    for (unsigned byte = input.byte() % (sizeof offset + 1); byte > 0; --byte)
        offset = offset << 8 | input.byte();
    auto const [actual, expected] = input.twoTexts();
    auto const length = static_cast<std::ptrdiff_t>(std::min(actual.size(), expected.size()));
    Buffers const buffers = {{actual.begin(), actual.begin() + length},
                             {expected.begin(), expected.begin() + length}};

    Log log;
    QPTTestHarness* const harness = QPTTestHarness::instance();
    harness->setLogLevel(level);
    harness->dumpBuffer(buffers.actual.data(), buffers.expected.data(), static_cast<unsigned long>(length), offset);
    if (length > 0 && level >= eLogNormal)
        checkDump(log, buffers, level == eLogDetailed ? 1000 : 10, offset);
    else if (level >= eLogNormal)
        log.line(); // empty buffers may have null addresses
    MO_FUZZ_REQUIRE(log.isAtEnd());
    return 0;
}
