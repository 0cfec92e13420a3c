#include "MoDiffSplitter.h"

#include <cstdint>

namespace {

// A block ends behind a line by the line's own bytes, so that a line more or less does not shift all blocks.
std::size_t const kLinesOfBlock = 16;
std::size_t const kLongestBlock = 1 << 16;

std::uint32_t hashOf(std::string_view bytes) {
    std::uint32_t hash = 2166136261U;
    for (char const byte : bytes)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619U;
    return hash;
}

} // namespace

std::size_t MoDiffSplitter::unitEnd(std::string_view text, std::size_t from, MoDiffGrain grain) const {
    switch (grain) {
    case MoDiffGrain::eWords:
        return wordEnd(text, from);
    case MoDiffGrain::eTokens:
        return tokenEnd(text, from);
    case MoDiffGrain::eLines:
        return lineEnd(text, from);
    case MoDiffGrain::eBlocks:
        return blockEnd(text, from);
    case MoDiffGrain::eWhole:
        break;
    }
    return text.size();
}

std::size_t MoDiffSplitter::blockEnd(std::string_view text, std::size_t from) const {
    std::size_t const limit = from + kLongestBlock;
    for (std::size_t line = from; line < text.size();) {
        std::size_t const end = lineEnd(text, line);
        if (end >= limit || (hashOf(text.substr(line, end - line)) >> 8) % kLinesOfBlock == 0)
            return end;
        line = end;
    }
    return text.size();
}
