#include "MoDiffLiteralMatcher.h"

#include "MoDiffSimd.h"
#include "MoDiffWidest.h"

#include <algorithm>
#include <cstring>

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
    deleteInSpans(progress, end);
    while (progress.read < end) {
        bool const hasRoom = static_cast<std::size_t>(end - progress.read) >= m_length;
        if (!hasRoom && !isWhole)
            return;
        if (hasRoom && std::memcmp(progress.read, m_bytes.data(), m_length) == 0)
            progress.deleteUntil(progress.read + m_length);
        else
            *progress.written++ = *progress.read++;
    }
}

#ifdef MO_DIFF_HAS_SIMD

namespace {

using Byte = unsigned char;
using MoDiffSimd::kSpan;
using MoDiffSimd::load;
using MoDiffSimd::store;

/// A bit for each byte of a span that is the given one.
std::uint32_t find(Byte const* span, Byte byte) {
    return MoDiffSimd::bits(MoDiffSimd::equal(load(span), MoDiffSimd::repeat(byte)));
}

/// Writes the bytes of a span that are not deleted; returns where the next ones belong.
Byte* writeKept(Byte const* read, Byte* written, std::uint32_t deleted) {
    if (deleted == 0) {
        if (written != read)
            store(load(read), written);
        return written + kSpan;
    }
    std::uint32_t const upToRun = deleted | (deleted - 1);
    if ((deleted & (upToRun + 1)) == 0) {
        // A run of bytes. Where and how long can't be foreseen: the same is done in any case.
        auto const before = static_cast<unsigned>(__builtin_ctz(deleted));
        auto const count = static_cast<unsigned>(__builtin_popcount(deleted));
        store(MoDiffSimd::join(load(read), before, load(read + count)), written);
        return written + kSpan - count;
    }
    for (unsigned i = 0; i < kSpan; ++i) {
        *written = read[i];
        written += (~deleted >> i) & 1;
    }
    return written;
}

/// Tells which bytes from a place on are deleted, a bit each.
void record(char const* bytes, std::uint64_t deleted, MoDiffTextProgress& progress) {
    for (; deleted != 0; deleted &= deleted - 1)
        progress.recordDeletion(bytes + __builtin_ctzll(deleted), 1);
}

} // namespace

/// A bit for each place in a span where an occurrence starts.
std::uint32_t MoDiffLiteralMatcher::findStarts(Byte const* span) const {
    std::uint32_t starts = find(span, m_bytes[0]);
    for (std::size_t i = 1; i < m_length && starts != 0; ++i)
        starts &= find(span + i, m_bytes[i]);
    return starts;
}

/// Deletes as far as whole spans, and what is read behind them, are known.
void MoDiffLiteralMatcher::deleteInSpans(MoDiffTextProgress& progress, char const* end) const {
    if (m_length == 1 && progress.written == progress.read) { // nothing has to be moved before the first occurrence
        void const* const first =
            std::memchr(progress.read, m_bytes[0], static_cast<std::size_t>(end - progress.read));
        progress.keepUntil(first ? static_cast<char const*>(first) : end);
    }
    auto const* read = reinterpret_cast<Byte const*>(progress.read);
    auto* written = reinterpret_cast<Byte*>(progress.written);
    auto const* const textEnd = reinterpret_cast<Byte const*>(end);
    if (m_length == 1 && !progress.isRecording() && MoDiffWidest::isThere())
        MoDiffWidest::deleteByte(read, textEnd, written, m_bytes[0]);
    std::uint64_t begun = 0; // the bytes of the next span that belong to an occurrence which has started before it
    auto const mostRead = static_cast<std::ptrdiff_t>(kSpan + std::max(kSpan, m_length));
    for (; textEnd - read >= mostRead; read += kSpan) {
        std::uint64_t const starts = findStarts(read);
        std::uint64_t deleted = begun | starts;
        for (std::size_t i = 1; i < m_length; ++i) // no branch for whether there are any: it can't be foreseen
            deleted |= starts << i;
        begun = deleted >> kSpan;
        auto const inSpan = static_cast<std::uint32_t>(deleted);
        if (progress.isRecording() && inSpan != 0)
            record(reinterpret_cast<char const*>(read), inSpan, progress);
        written = writeKept(read, written, inSpan);
    }
    progress.read = reinterpret_cast<char const*>(read);
    progress.written = reinterpret_cast<char*>(written);
    record(progress.read, begun, progress);
    progress.read += __builtin_popcountll(begun);
}

#else

void MoDiffLiteralMatcher::deleteInSpans(MoDiffTextProgress&, char const*) const {
}

std::uint32_t MoDiffLiteralMatcher::findStarts(Byte const*) const {
    return 0;
}

#endif
