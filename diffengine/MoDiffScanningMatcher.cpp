#include "MoDiffScanningMatcher.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

// After a candidate that fails within so few bytes, the next one is simply tried; after a longer attempt, a search
// from the candidate on makes sure that no byte is read again and again.
std::ptrdiff_t const kShortAttempt = 8;

// An attempt that gets this far without an end is given up for a search, which then is all that reads on.
std::ptrdiff_t const kLongestAttempt = std::ptrdiff_t{64} << 10;

} // namespace

std::unique_ptr<MoDiffScanningMatcher> MoDiffScanningMatcher::create(MoDiffExpression const& expression) {
    std::optional<MoDiffProgram> program = MoDiffProgram::compile(expression);
    if (!program)
        return nullptr;
    return std::unique_ptr<MoDiffScanningMatcher>(new MoDiffScanningMatcher(std::move(*program)));
}

MoDiffScanningMatcher::MoDiffScanningMatcher(MoDiffProgram program)
    : m_program(std::move(program)), m_forward(m_program.alphabet(), m_program.forward(), /*prefersEarlierWays=*/true,
                                               m_program.startsAtWordBoundary()),
      m_backward(m_program.alphabet(), m_program.backward(), /*prefersEarlierWays=*/false,
                 /*startsAtWordBoundary=*/false) {
    if (!m_program.prefix().empty())
        m_scanner.emplace(m_program.prefix());
}

void MoDiffScanningMatcher::deleteMatches(char* text, std::size_t length) {
    char* const end = text + length;
    char* kept = text;          // where what survives next is put
    char const* segment = text; // what survives next, from here to the next match
    auto const keepUntil = [&](char const* stop) {
        auto const count = static_cast<std::size_t>(stop - segment);
        if (kept != segment)
            std::memmove(kept, segment, count);
        kept += count;
    };
    auto const bytes = [](char const* position) { return reinterpret_cast<Text>(position); };
    // Behind a deleted match its own bytes still stand, for the next one may depend on the character before it.
    for (;;) {
        Match const match = find({bytes(text), bytes(segment), bytes(end)});
        if (!match.start)
            break;
        keepUntil(reinterpret_cast<char const*>(match.start));
        // Matches that are known without reading on are taken together.
        bool const areSure = m_program.isPrefixWholeMatch() && !m_program.startsAtWordBoundary();
        Text const next = areSure ? m_scanner->skip(match.end, bytes(end)) : match.end;
        segment = reinterpret_cast<char const*>(next);
    }
    keepUntil(end);
    std::fill(kept, end, '\0');
}

MoDiffScanningMatcher::Match MoDiffScanningMatcher::find(Place place) {
    Text const end = place.end;
    while (Text const candidate = nextCandidate(place)) {
        place.position = candidate;
        if (m_program.isPrefixWholeMatch())
            return {candidate, candidate + m_program.prefix().size()};
        if (!m_expectsFailure) {
            Text const limit = end - candidate > kLongestAttempt ? candidate + kLongestAttempt : end;
            MoDiffAutomaton::Outcome const attempt = m_forward.matchAt(candidate, limit, end);
            bool const isCertain = attempt.stopped < limit || limit == end;
            if (attempt.matchEnd && isCertain)
                return {candidate, attempt.matchEnd};
            if (attempt.stopped - candidate <= kShortAttempt && isCertain && m_scanner) {
                ++place.position;
                continue;
            }
        }
        MoDiffAutomaton::Outcome const found = m_forward.search(candidate, end, previousIsWord(place));
        if (found.matchEnd) {
            auto const isStart = [&](Text start) { return isWordBoundary({place.begin, start, end}); };
            Text const start = m_backward.matchBackwards(candidate, found.matchEnd, end, isStart);
            m_expectsFailure = start != candidate;
            return {start, found.matchEnd};
        }
        // Where candidates fail late, the attempt is left out and the search made at once.
        m_expectsFailure = found.stopped - candidate > kShortAttempt;
        place.position = found.stopped;
    }
    return {nullptr, nullptr};
}

/// The first place from the position on where a match can begin; null when there is none.
MoDiffScanningMatcher::Text MoDiffScanningMatcher::nextCandidate(Place const& place) const {
    if (!m_scanner)
        return place.position < place.end ? place.position : nullptr;
    Text candidate = m_scanner->find(place.position, place.end);
    while (candidate && !isWordBoundary({place.begin, candidate, place.end}))
        candidate = m_scanner->find(candidate + 1, place.end);
    return candidate;
}

bool MoDiffScanningMatcher::previousIsWord(Place place) const {
    MoDiffAlphabet const& alphabet = m_program.alphabet();
    while (place.position > place.begin) {
        MoDiffAlphabet::Symbol const symbol = alphabet.symbolBefore(place.begin, place.position, place.end);
        if (!alphabet.isCombining(symbol.symbolClass))
            return alphabet.isWord(symbol.symbolClass);
        place.position -= symbol.length;
    }
    return false;
}

/// Whether a match may begin at the position; always, for an expression that doesn't ask for a word boundary.
bool MoDiffScanningMatcher::isWordBoundary(Place const& place) const {
    if (!m_program.startsAtWordBoundary())
        return true;
    MoDiffAlphabet const& alphabet = m_program.alphabet();
    MoDiffAlphabet::Symbol const symbol = alphabet.symbolAt(place.position, place.end);
    return alphabet.isBoundary(previousIsWord(place), symbol.symbolClass);
}
