#include "MoDiffScanningMatcher.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

// A candidate is tried by itself unless more bytes than these have been read behind it in vain; else a search makes
// sure that no byte is read again and again.
std::ptrdiff_t const kShortAttempt = 8;

// What every match contains is looked for in as many bytes at once.
std::ptrdiff_t const kWindow = 16 << 10;

// Fewer bytes are moved one by one.
std::size_t const kFewBytes = 8;

} // namespace

std::unique_ptr<MoDiffScanningMatcher> MoDiffScanningMatcher::create(MoDiffExpression const& expression) {
    std::optional<MoDiffProgram> program = MoDiffProgram::compile(expression);
    if (!program)
        return nullptr;
    return std::unique_ptr<MoDiffScanningMatcher>(new MoDiffScanningMatcher(std::move(*program)));
}

MoDiffScanningMatcher::MoDiffScanningMatcher(MoDiffProgram program)
    : m_program(std::move(program)), m_forward(m_program, MoDiffAutomaton::eForward),
      m_backward(m_program, MoDiffAutomaton::eBackward), m_literal(MoDiffLiteralMatcher::create(m_program)) {
    if (!m_program.prefix().empty())
        m_scanner.emplace(m_program.prefix());
    if (!m_program.required().empty())
        m_requiredScanner.emplace(m_program.required());
}

void MoDiffScanningMatcher::deleteMatches(char* text, std::size_t length) {
    if (m_literal) {
        m_literal->deleteMatches(text, length);
        return;
    }
    char* const end = text + length;
    char* kept = text;          // where what survives next is put
    char const* segment = text; // what survives next, from here to the next match
    auto const keepUntil = [&](char const* stop) {
        auto const count = static_cast<std::size_t>(stop - segment);
        if (count < kFewBytes) {
            while (segment < stop)
                *kept++ = *segment++;
            return;
        }
        if (kept != segment)
            std::memmove(kept, segment, count);
        kept += count;
    };
    auto const bytes = [](char const* position) { return reinterpret_cast<Text>(position); };
    Knowledge known;
    // Behind a deleted match its own bytes still stand, for the next one may depend on the character before it.
    for (;;) {
        Match const match = find({bytes(text), bytes(segment), bytes(end)}, known);
        if (!match.start)
            break;
        keepUntil(reinterpret_cast<char const*>(match.start));
        segment = reinterpret_cast<char const*>(match.end);
    }
    keepUntil(end);
    std::fill(kept, end, '\0');
}

MoDiffScanningMatcher::Match MoDiffScanningMatcher::find(Place place, Knowledge& known) {
    Text const end = place.end;
    Text tried = place.position; // how far candidates have been tried in vain
    while (Text const candidate = nextCandidate(place, known)) {
        place.position = candidate;
        if (!known.noneFrom)
            known.noneFrom = findNoneFrom(place);
        if (candidate >= known.noneFrom)
            break;
        if (m_program.isPrefixWholeMatch())
            return {candidate, candidate + m_program.prefix().size()};
        if (!m_expectsFailure && tried - candidate <= kShortAttempt) {
            MoDiffAutomaton::Outcome const attempt = m_forward.matchAt(candidate, end);
            if (attempt.matchEnd)
                return {candidate, attempt.matchEnd};
            if (m_scanner) {
                tried = attempt.stopped;
                place.position = candidate + 1;
                if (tried - candidate > kShortAttempt && m_forward.isPersistent())
                    place.position = std::max(place.position, attempt.lastAlive + 1 - m_program.headLength());
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
MoDiffScanningMatcher::Text MoDiffScanningMatcher::nextCandidate(Place const& place, Knowledge& known) const {
    if (!m_scanner)
        return place.position < place.end ? place.position : nullptr;
    Text candidate = m_scanner->find(place.position, place.end, known.cursor);
    while (candidate && !isWordBoundary({place.begin, candidate, place.end}))
        candidate = m_scanner->find(candidate + 1, place.end, known.cursor);
    return candidate;
}

/// Looks from the text's end backwards for what every match contains.
MoDiffScanningMatcher::Text MoDiffScanningMatcher::findNoneFrom(Place const& place) const {
    if (!m_requiredScanner)
        return place.end;
    Text windowEnd = place.end;
    while (windowEnd > place.position) {
        Text const window = windowEnd - std::min(windowEnd - place.position, kWindow);
        auto const overlap = static_cast<std::ptrdiff_t>(m_program.required().size() - 1);
        MoDiffCandidateScanner::Cursor cursor;
        if (m_requiredScanner->find(window, windowEnd + std::min(place.end - windowEnd, overlap), cursor))
            break;
        windowEnd = window;
    }
    return windowEnd;
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
    std::uint8_t const here = alphabet.classOfByte(*place.position);
    std::uint8_t const before = place.position > place.begin ? alphabet.classOfByte(place.position[-1]) : 0;
    if (here != MoDiffAlphabet::kDecode && before != MoDiffAlphabet::kDecode && !alphabet.isCombining(before))
        return alphabet.isBoundary(alphabet.isWord(before), here);
    MoDiffAlphabet::Symbol const symbol = alphabet.symbolAt(place.position, place.end);
    return alphabet.isBoundary(previousIsWord(place), symbol.symbolClass);
}
