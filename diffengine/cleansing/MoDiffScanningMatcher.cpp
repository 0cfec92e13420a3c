#include "MoDiffScanningMatcher.h"

#include "MoUtf8.h"

#include <algorithm>
#include <utility>

namespace {

// A candidate is tried by itself unless more bytes than these have been read behind it in vain; else a search makes
// sure that no byte is read again and again.
std::ptrdiff_t const kShortAttempt = 2;

// What every match contains is looked for in as many bytes at once.
std::ptrdiff_t const kWindow = 16 << 10;

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

void MoDiffScanningMatcher::deleteMatches(MoDiffTextProgress& progress, char const* end, bool isWhole) {
    if (m_literal) {
        m_literal->deleteMatches(progress, end, isWhole);
        return;
    }
    if (!isWhole && static_cast<std::size_t>(end - progress.read) < progress.wanted)
        return;
    auto const bytes = [](char const* position) { return reinterpret_cast<Text>(position); };
    auto const characters = [](Text position) { return reinterpret_cast<char const*>(position); };
    Text const begin = bytes(progress.read);
    Place place = {begin, begin, isWhole ? bytes(end) : endOfWholeCharacters(begin, bytes(end)),
                   progress.isBehindWord};
    Knowledge known = {isWhole};
    // Behind a deleted match its own bytes still stand, for the next one may depend on the character before it.
    for (;;) {
        Match const match = find(place, known);
        place.position = match.end;
        if (!match.start)
            break;
        progress.keepUntil(characters(match.start));
        progress.deleteUntil(characters(match.end));
    }
    if (!isWhole)
        progress.isBehindWord = m_program.startsAtWordBoundary() && previousIsWord(place);
    progress.keepUntil(characters(place.position));
    progress.wanted = 2 * static_cast<std::size_t>(end - progress.read);
}

MoDiffScanningMatcher::Match MoDiffScanningMatcher::find(Place place, Knowledge& known) {
    Text const end = place.end;
    Text tried = place.position; // how far candidates have been tried in vain
    while (Text const candidate = nextCandidate(place, known)) {
        place.position = candidate;
        if (!known.noneFrom)
            known.noneFrom = known.isWhole ? findNoneFrom(place) : end;
        if (candidate >= known.noneFrom)
            return {nullptr, end};
        if (m_program.isPrefixWholeMatch())
            return {candidate, candidate + m_program.prefix().size()};
        // What still goes on where the known text ends can't be decided.
        auto const isOpen = [&](MoDiffAutomaton::Outcome const& outcome) {
            return outcome.lastAlive == end && !known.isWhole;
        };
        if (!m_expectsFailure && tried - candidate <= kShortAttempt) {
            MoDiffAutomaton::Outcome const attempt = m_forward.matchAt(candidate, end);
            if (isOpen(attempt))
                return {nullptr, candidate};
            if (attempt.matchEnd)
                return {candidate, attempt.matchEnd};
            if (m_scanner) {
                tried = attempt.stopped;
                place.position = candidate + 1;
                if (tried - candidate > kShortAttempt && m_forward.isPersistent()) {
                    Text const untried = attempt.lastAlive + 1 - m_program.headLength();
                    place.position = std::clamp(untried, place.position, end);
                }
                continue;
            }
        }
        MoDiffAutomaton::Outcome const found = m_forward.search(candidate, end, previousIsWord(place));
        if (isOpen(found))
            return {nullptr, candidate};
        if (found.matchEnd) {
            auto const isStart = [&](Text start) {
                return isWordBoundary({place.begin, start, end, place.isBehindWord});
            };
            Text const start = m_backward.matchBackwards(candidate, found.matchEnd, end, isStart);
            m_expectsFailure = start != candidate;
            return {start, found.matchEnd};
        }
        // Where candidates fail late, the attempt is left out and the search made at once.
        m_expectsFailure = found.stopped - candidate > kShortAttempt;
        place.position = found.stopped;
    }
    return {nullptr, known.isWhole ? end : endOfDecided(place)};
}

/// Where a candidate might begin that the end of the known text cuts off, when there is none from the position on.
MoDiffScanningMatcher::Text MoDiffScanningMatcher::endOfDecided(Place const& place) const {
    auto const overlap = static_cast<std::ptrdiff_t>(std::max(m_program.prefix().size(), std::size_t{1}) - 1);
    Text position = place.end - std::min(place.end - place.position, overlap);
    while (position > place.position && MoUtf8::isContinuation(*position))
        --position;
    return position;
}

/// Leaves out last characters that more text might change: parts of UTF-8 sequences, and a carriage return.
MoDiffScanningMatcher::Text MoDiffScanningMatcher::endOfWholeCharacters(Text begin, Text end) {
    while (end > begin && (end[-1] >= 0x80 || end[-1] == '\r'))
        --end;
    return end;
}

/// The first place from the position on where a match can begin; null when there is none.
MoDiffScanningMatcher::Text MoDiffScanningMatcher::nextCandidate(Place const& place, Knowledge& known) const {
    if (!m_scanner)
        return place.position < place.end ? place.position : nullptr;
    Text candidate = m_scanner->find(place.position, place.end, known.cursor);
    while (candidate && !isWordBoundary({place.begin, candidate, place.end, place.isBehindWord}))
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
    return place.isBehindWord;
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
