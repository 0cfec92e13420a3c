#include "MoDiffFirstDifference.h"

#include <algorithm>
#include <fstream>

namespace {

std::size_t const kBlock = 1 << 16;
std::size_t const kBefore = 256; // more than an excerpt shows
std::size_t const kBehind = 256;
int const kEnd = std::char_traits<char>::eof();

/// One of the files.
class Side {
public:
    Side(std::string const& name, bool withoutReturns)
        : m_file(name, std::ios::binary), m_withoutReturns(withoutReturns), m_block(kBlock, '\0') {}

    bool isOpen() const { return m_file.is_open(); }

    /// Reads the next block; empty at the end.
    void readBlock() {
        m_block.resize(kBlock);
        m_file.read(m_block.data(), kBlock);
        m_block.resize(static_cast<std::size_t>(m_file.gcount()));
        m_next = 0;
    }
    std::string const& getBlock() const { return m_block; }

    /// The next byte that counts, or kEnd.
    int next() {
        do {
            if (m_next == m_block.size())
                readBlock();
            if (m_block.empty())
                return kEnd;
        } while (m_block[m_next++] == '\r' && m_withoutReturns);
        return static_cast<unsigned char>(m_block[m_next - 1]);
    }

    /// A byte that was got from next() and some of those behind it.
    std::string rest(int byte) {
        std::string text;
        for (; byte != kEnd && text.size() < kBehind; byte = next())
            text += static_cast<char>(byte);
        return text;
    }

private:
    std::ifstream m_file;
    bool m_withoutReturns;
    std::string m_block;
    std::size_t m_next = 0;
};

unsigned long long countOf(std::string const& text, char byte) {
    return static_cast<unsigned long long>(std::count(text.begin(), text.end(), byte));
}

/// Counts the lines of what both files have in common and keeps the end of it.
struct Common {
    unsigned long long line = 1;
    unsigned long long position = 0;
    std::string end;

    /// @param returns how many of the bytes don't count
    void add(std::string const& text, unsigned long long returns) {
        position += text.size() - returns;
        line += countOf(text, '\n');
        end.append(text, text.size() - std::min(text.size(), kBefore));
        trim(kBefore);
    }
    void add(int byte) {
        ++position;
        line += byte == '\n';
        end += static_cast<char>(byte);
        if (end.size() > kBlock)
            trim(kBefore);
    }
    void trim(std::size_t size) { end.erase(0, end.size() - std::min(end.size(), size)); }
};

} // namespace

std::optional<MoDiffFirstDifference> MoDiffFirstDifference::find(std::string const& masterName,
                                                                 std::string const& actualName, bool withoutReturns) {
    Side master(masterName, withoutReturns);
    Side actual(actualName, withoutReturns);
    if (!master.isOpen() || !actual.isOpen())
        return std::nullopt;
    Common common;
    master.readBlock();
    actual.readBlock();
    for (; !master.getBlock().empty() && master.getBlock() == actual.getBlock(); actual.readBlock()) {
        std::string const& block = master.getBlock();
        common.add(block, withoutReturns ? countOf(block, '\r') : 0);
        master.readBlock();
    }
    if (withoutReturns)
        common.end.erase(std::remove(common.end.begin(), common.end.end(), '\r'), common.end.end());
    int masterByte = master.next();
    int actualByte = actual.next();
    for (; masterByte == actualByte && masterByte != kEnd; actualByte = actual.next()) {
        common.add(masterByte);
        masterByte = master.next();
    }
    if (masterByte == actualByte)
        return std::nullopt;
    common.trim(kBefore);
    return MoDiffFirstDifference{common.line, common.position, common.end + master.rest(masterByte),
                                 common.end + actual.rest(actualByte), common.end.size()};
}
