#include "MoDiffLiteralMatcher.h"

#include <algorithm>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

std::optional<MoDiffLiteralMatcher> MoDiffLiteralMatcher::create(MoDiffProgram const& program) {
    MoDiffProgram::Prefix const& prefix = program.prefix();
    auto const isOne = [](auto const& characters) { return characters.count() == 1; };
    if (!program.isPrefixWholeMatch() || program.startsAtWordBoundary() ||
        !std::all_of(prefix.begin(), prefix.end(), isOne))
        return std::nullopt;
    std::string text;
    for (auto const& characters : prefix) {
        text += '\0';
        while (!characters[static_cast<Byte>(text.back())])
            ++text.back();
    }
    for (std::size_t shift = 1; shift < text.size(); ++shift) {
        if (text.compare(shift, text.npos, text, 0, text.size() - shift) == 0)
            return std::nullopt;
    }
    return MoDiffLiteralMatcher(text);
}

MoDiffLiteralMatcher::MoDiffLiteralMatcher(std::string const& text) : m_length(text.size()) {
    std::copy(text.begin(), text.end(), m_bytes.begin());
}

void MoDiffLiteralMatcher::deleteMatches(MoDiffTextProgress& progress, char const* end, bool isWhole) const {
    Place place = {reinterpret_cast<Byte const*>(progress.read), reinterpret_cast<Byte*>(progress.written),
                   reinterpret_cast<Byte const*>(end)};
    moveBlocks(place, progress);
    moveBytes(place, isWhole, progress);
    progress.read = reinterpret_cast<char const*>(place.read);
    progress.written = reinterpret_cast<char*>(place.written);
}

/// What the blocks leave over.
void MoDiffLiteralMatcher::moveBytes(Place& place, bool isWhole, MoDiffTextProgress& progress) const {
    while (place.read < place.end) {
        bool const hasRoom = static_cast<std::size_t>(place.end - place.read) >= m_length;
        if (!hasRoom && !isWhole)
            return;
        if (hasRoom && std::memcmp(place.read, m_bytes.data(), m_length) == 0) {
            progress.recordDeletion(reinterpret_cast<char const*>(place.read), m_length);
            place.read += m_length;
        } else {
            *place.written++ = *place.read++;
        }
    }
}

#ifdef __SSE2__

namespace {

unsigned constexpr kHalf = 16;
unsigned constexpr kBlock = 2 * kHalf;

struct Block {
    __m128i low;
    __m128i high;
};

Block load(unsigned char const* bytes) {
    return {_mm_loadu_si128(reinterpret_cast<__m128i const*>(bytes)),
            _mm_loadu_si128(reinterpret_cast<__m128i const*>(bytes + kHalf))};
}

void store(Block const& block, unsigned char* bytes) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), block.low);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes + kHalf), block.high);
}

/// A bit for each byte of a block that is the given one.
std::uint32_t findByte(unsigned char const* block, unsigned char byte) {
    Block const bytes = load(block);
    __m128i const wanted = _mm_set1_epi8(static_cast<char>(byte));
    auto const low = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes.low, wanted)));
    auto const high = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes.high, wanted)));
    return low | high << kHalf;
}

/// Tells which bytes from a place on are deleted, a bit each.
void recordBytes(unsigned char const* bytes, std::uint64_t deleted, MoDiffTextProgress& progress) {
    for (; deleted != 0; deleted &= deleted - 1)
        progress.recordDeletion(reinterpret_cast<char const*>(bytes) + __builtin_ctzll(deleted), 1);
}

} // namespace

/// A bit for each place in a block where an occurrence starts.
std::uint32_t MoDiffLiteralMatcher::findStarts(Byte const* block) const {
    std::uint32_t starts = findByte(block, m_bytes[0]);
    for (std::size_t i = 1; i < m_length && starts != 0; ++i)
        starts &= findByte(block + i, m_bytes[i]);
    return starts;
}

void MoDiffLiteralMatcher::moveBlocks(Place& place, MoDiffTextProgress& progress) const {
    if (m_length == 1 && place.written == place.read) { // nothing has to be moved before the first occurrence
        void const* const first =
            std::memchr(place.read, m_bytes[0], static_cast<std::size_t>(place.end - place.read));
        place.read = first ? static_cast<Byte const*>(first) : place.end;
        place.written += place.read - place.written;
    }
    std::uint64_t begun = 0; // the bytes of the next block that belong to an occurrence which has started before it
    auto const mostRead = static_cast<std::ptrdiff_t>(std::max(std::size_t{2} * kBlock, kBlock + m_length));
    for (; place.end - place.read >= mostRead; place.read += kBlock) {
        std::uint64_t const starts = findStarts(place.read);
        std::uint64_t deleted = begun;
        if (starts != 0) {
            for (std::size_t i = 0; i < m_length; ++i)
                deleted |= starts << i;
        }
        begun = deleted >> kBlock;
        auto const inBlock = static_cast<std::uint32_t>(deleted);
        if (inBlock == 0) {
            if (place.written != place.read)
                store(load(place.read), place.written);
            place.written += kBlock;
            continue;
        }
        if (progress.isRecording())
            recordBytes(place.read, inBlock, progress);
        std::uint32_t const upToRun = inBlock | (inBlock - 1);
        bool const isOneRun = (inBlock & (upToRun + 1)) == 0;
        if (isOneRun && place.read - place.written >= std::ptrdiff_t{kBlock}) {
            auto const before = static_cast<unsigned>(__builtin_ctz(inBlock));
            unsigned const behind = before + static_cast<unsigned>(__builtin_popcount(inBlock));
            Block const rest = load(place.read + behind); // reaches beyond the block; the next one writes over that
            store(load(place.read), place.written);
            store(rest, place.written + before);
            place.written += kBlock - (behind - before);
            continue;
        }
        for (unsigned i = 0; i < kBlock; ++i) {
            *place.written = place.read[i];
            place.written += (~inBlock >> i) & 1;
        }
    }
    recordBytes(place.read, begun, progress);
    place.read += __builtin_popcountll(begun);
}

#else

void MoDiffLiteralMatcher::moveBlocks(Place&, MoDiffTextProgress&) const {
}

std::uint32_t MoDiffLiteralMatcher::findStarts(Byte const*) const {
    return 0;
}

#endif
