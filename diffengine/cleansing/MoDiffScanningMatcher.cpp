#include "MoDiffScanningMatcher.h"

#include "MoUtf8.h"

#include <algorithm>
#include <utility>

namespace {

// A candidate is tried by itself unless more bytes than these have been read behind it in vain; else a search makes
// sure that no byte is read again and again.
std::ptrdiff_t const kShortAttempt = 2;

// So many bytes are read for a match before it is looked for what every match contains.
std::ptrdiff_t const kNearby = 512;

// What every match contains is looked for in as many bytes at once.
std::ptrdiff_t const kWindow = 16 << 10;

} // namespace

std::unique_ptr<MoDiffScanningMatcher> MoDiffScanningMatcher::create(MoDiffExpression const& expression,
                                                                     std::size_t stateLimit) {
    std::optional<MoDiffProgram> program = MoDiffProgram::compile(expression);
    if (!program)
        return nullptr;
    return std::unique_ptr<MoDiffScanningMatcher>(new MoDiffScanningMatcher(std::move(*program), stateLimit));
}

MoDiffScanningMatcher::MoDiffScanningMatcher(MoDiffProgram program, std::size_t stateLimit)
    : m_program(std::move(program)), m_forward(m_program, MoDiffStateTable::eForward, stateLimit),
      m_backward(m_program, MoDiffStateTable::eBackward, stateLimit),
      m_literal(MoDiffLiteralMatcher::create(m_program)) {
    if (!m_literal)
        m_pair = MoDiffCandidateIndex::choosePair(m_program.prefix());
    if (!m_program.prefix().empty())
        m_scanner.emplace(m_program.prefix());
    if (!m_program.required().empty())
        m_requiredScanner.emplace(m_program.required());
}

void MoDiffScanningMatcher::deleteMatches(MoDiffTextProgress& progress, char const* end, MoDiffCandidateIndex& index,
                                          std::size_t pair) {
    progress.keepTrue(index);
    deleteMatches(progress, end, /*isWhole=*/true, MoDiffCandidateScanner::Cursor(index, pair));
    index.finish();
}

void MoDiffScanningMatcher::deleteMatches(MoDiffTextProgress& progress, char const* end, bool isWhole,
                                          MoDiffCandidateScanner::Cursor cursor) {
    if (m_literal) {
        m_literal->deleteMatches(progress, end, isWhole);
        return;
    }
    if (!isWhole && static_cast<std::size_t>(end - progress.read) < progress.wanted)
        return;
    auto const bytes = [](char const* position) { return reinterpret_cast<Text>(position); };
    auto const characters = [](Text position) { return reinterpret_cast<char const*>(position); };
    Text const begin = bytes(progress.read);
    Text const known = isWhole ? bytes(end) : endOfWholeCharacters(begin, bytes(end));
    Reading reading = {begin, known, isWhole, progress.isBehindWord, begin, cursor};
    // Behind a deleted match its own bytes still stand, for the next one may depend on the character before it.
    while (std::optional<Match> const match = find(reading)) {
        progress.keepUntil(characters(match->start));
        progress.deleteUntil(characters(match->end));
        reading.position = match->end;
    }
    if (!isWhole)
        progress.isBehindWord = m_program.startsAtWordBoundary() && previousIsWord(reading, reading.position);
    progress.keepUntil(characters(reading.position));
    progress.wanted = 2 * static_cast<std::size_t>(end - progress.read);
}

/// The next match. Without one, the position is where the next search has to begin.
/// INVARIANT: no match begins before the position; before tried, candidates have been read in vain.
std::optional<MoDiffScanningMatcher::Match> MoDiffScanningMatcher::find(Reading& reading) {
    reading.tried = reading.position;
    while (Text const candidate = nextCandidate(reading)) {
        reading.position = candidate;
        if (m_program.isPrefixWholeMatch())
            return Match{candidate, candidate + m_program.prefix().size()};
        if (!reading.noneFrom) {
            if (Text const nearEnd = endNearby(reading))
                return Match{candidate, nearEnd};
            reading.noneFrom = reading.isWhole ? findNoneFrom(reading) : reading.end;
        }
        if (candidate >= reading.noneFrom) {
            reading.position = reading.end;
            return std::nullopt;
        }
        Verdict verdict = eFailed;
        Match match = {candidate, nullptr};
        if (!m_expectsFailure && reading.tried - candidate <= kShortAttempt)
            verdict = tryHere(reading, match);
        if (verdict == eFailed && reading.position == candidate)
            verdict = search(reading, match);
        if (verdict == eOpen)
            return std::nullopt;
        if (verdict == eMatched)
            return match;
    }
    reading.position = reading.isWhole ? reading.end : endOfDecided(reading);
    return std::nullopt;
}

/// Where a match from the position on ends, if that is decided nearby: then nothing need be known of the rest. Null
/// else, and where there is nothing that could be looked for in the rest.
MoDiffScanningMatcher::Text MoDiffScanningMatcher::endNearby(Reading const& reading) {
    if (!m_requiredScanner || !reading.isWhole || reading.end - reading.position <= kNearby)
        return nullptr;
    Text const end = endOfWholeCharacters(reading.position, reading.position + kNearby);
    MoDiffAutomaton::Outcome const attempt = m_forward.matchAt(reading.position, end);
    return attempt.lastAlive == end ? nullptr : attempt.matchEnd;
}

/// What still goes on where the known text ends can't be decided.
MoDiffScanningMatcher::Verdict MoDiffScanningMatcher::judge(Reading const& reading,
                                                            MoDiffAutomaton::Outcome const& outcome) {
    if (outcome.lastAlive == reading.end && !reading.isWhole)
        return eOpen;
    return outcome.matchEnd ? eMatched : eFailed;
}

/// Tries the candidate at the position by itself. In vain, goes on to where the next candidate may be; without a
/// scanner that could find it, the position stays.
MoDiffScanningMatcher::Verdict MoDiffScanningMatcher::tryHere(Reading& reading, Match& match) {
    Text const candidate = reading.position;
    MoDiffAutomaton::Outcome const attempt = m_forward.matchAt(candidate, reading.end);
    match.end = attempt.matchEnd;
    Verdict const verdict = judge(reading, attempt);
    if (verdict != eFailed || !m_scanner)
        return verdict;
    reading.tried = attempt.stopped;
    reading.position = candidate + 1;
    if (reading.tried - candidate > kShortAttempt && m_forward.isPersistent()) {
        // What failed from here fails from every candidate whose head lies before the failure.
        Text const untried = attempt.lastAlive + 1 - m_program.headLength();
        reading.position = std::clamp(untried, reading.position, reading.end);
    }
    return eFailed;
}

/// Searches from the candidate at the position on for a match that begins anywhere: each byte is read once, however
/// many candidates there are. In vain, goes on to where the search stopped.
MoDiffScanningMatcher::Verdict MoDiffScanningMatcher::search(Reading& reading, Match& match) {
    Text const candidate = reading.position;
    bool const isBehindWord = m_program.startsAtWordBoundary() && previousIsWord(reading, candidate);
    MoDiffAutomaton::Outcome const found = m_forward.search(candidate, reading.end, isBehindWord);
    Verdict const verdict = judge(reading, found);
    if (verdict == eMatched) {
        auto const isStart = [&](Text start) { return isWordBoundary(reading, start); };
        match = {m_backward.matchBackwards(candidate, found.matchEnd, reading.end, isStart), found.matchEnd};
        m_expectsFailure = match.start != candidate;
    } else if (verdict == eFailed) {
        // Where candidates fail late, the attempt is left out and the search made at once.
        m_expectsFailure = found.stopped - candidate > kShortAttempt;
        reading.position = found.stopped;
    }
    return verdict;
}

/// Where a candidate might begin that the end of the known text cuts off, when there is none from the position on.
MoDiffScanningMatcher::Text MoDiffScanningMatcher::endOfDecided(Reading const& reading) const {
    auto const overlap = static_cast<std::ptrdiff_t>(std::max(m_program.prefix().size(), std::size_t{1}) - 1);
    Text position = reading.end - std::min(reading.end - reading.position, overlap);
    while (position > reading.position && MoUtf8::isContinuation(*position))
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
MoDiffScanningMatcher::Text MoDiffScanningMatcher::nextCandidate(Reading& reading) const {
    if (!m_scanner)
        return reading.position < reading.end ? reading.position : nullptr;
    Text candidate = m_scanner->find(reading.position, reading.end, reading.cursor);
    while (candidate && !isWordBoundary(reading, candidate))
        candidate = m_scanner->find(candidate + 1, reading.end, reading.cursor);
    return candidate;
}

/// Looks from the text's end backwards for what every match contains.
MoDiffScanningMatcher::Text MoDiffScanningMatcher::findNoneFrom(Reading const& reading) const {
    if (!m_requiredScanner)
        return reading.end;
    Text windowEnd = reading.end;
    while (windowEnd > reading.position) {
        Text const window = windowEnd - std::min(windowEnd - reading.position, kWindow);
        auto const overlap = static_cast<std::ptrdiff_t>(m_program.required().size() - 1);
        MoDiffCandidateScanner::Cursor cursor;
        if (m_requiredScanner->find(window, windowEnd + std::min(reading.end - windowEnd, overlap), cursor))
            break;
        windowEnd = window;
    }
    return windowEnd;
}

bool MoDiffScanningMatcher::previousIsWord(Reading const& reading, Text position) const {
    MoDiffAlphabet const& alphabet = m_program.alphabet();
    while (position > reading.begin) {
        MoDiffAlphabet::Symbol const symbol = alphabet.symbolBefore(reading.begin, position, reading.end);
        if (!alphabet.isCombining(symbol.symbolClass))
            return alphabet.isWord(symbol.symbolClass);
        position -= symbol.length;
    }
    return reading.isBehindWord;
}

/// Whether a match may begin at a position; always, for an expression that doesn't ask for a word boundary.
bool MoDiffScanningMatcher::isWordBoundary(Reading const& reading, Text position) const {
    if (!m_program.startsAtWordBoundary())
        return true;
    MoDiffAlphabet const& alphabet = m_program.alphabet();
    std::uint8_t const here = alphabet.classOfByte(*position);
    std::uint8_t const before = position > reading.begin ? alphabet.classOfByte(position[-1]) : 0;
    if (here != MoDiffAlphabet::kDecode && before != MoDiffAlphabet::kDecode)
        return alphabet.isBoundary(alphabet.isWord(before), here);
    MoDiffAlphabet::Symbol const symbol = alphabet.symbolAt(position, reading.end);
    return alphabet.isBoundary(previousIsWord(reading, position), symbol.symbolClass);
}
