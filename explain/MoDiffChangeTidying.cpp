#include "MoDiffChangeTidying.h"

#include <algorithm>

namespace {

std::size_t const kFurthestSlide = 200; // units

bool opensTag(std::string_view text, std::size_t at) {
    return at + 1 < text.size() && text[at] == '<' && text[at + 1] != '/';
}

/// The name of the tag that begins at an index, "</" or "<" left out.
std::string_view tagName(std::string_view text, std::size_t at) {
    at += text.substr(at, 2) == "</" ? 2 : 1;
    std::size_t const end = text.find_first_of(" \t\r\n/>", at);
    return end == std::string_view::npos ? std::string_view() : text.substr(at, end - at);
}

/// How well a range reads as a piece of its own.
int pieceScore(std::string_view text, MoDiffRange range) {
    int score = 0;
    if (range.begin == 0 || text[range.begin - 1] == '\n')
        score += 8;
    if (text[range.end - 1] == ' ' || range.end == text.size())
        score += 1;
    if (!opensTag(text, range.begin))
        return score;
    score += 2;
    std::size_t const last = text.rfind('<', range.end - 1);
    bool const closes = text[range.end - 1] == '>' && text[last + 1] == '/';
    return closes && tagName(text, last) == tagName(text, range.begin) ? score + 4 : score;
}

} // namespace

MoDiffChangeTidying::MoDiffChangeTidying(MoDiffUnits const& master, MoDiffUnits const& actual,
                                         MoDiffSequenceDiff const& diff, std::size_t most)
    : m_master(master), m_actual(actual), m_most(most) {
    std::size_t first = 0;
    std::size_t second = 0;
    while (first < master.size() || second < actual.size()) {
        bool const deleted = first < master.size() && diff.isDeleted(first);
        bool const inserted = second < actual.size() && diff.isInserted(second);
        bool const replaced =
            !deleted && !inserted && master.bytes(first, first + 1) != actual.bytes(second, second + 1);
        if (deleted || inserted || replaced)
            add(first, second, deleted || replaced, inserted || replaced);
        first += !inserted || deleted;
        second += !deleted || inserted;
    }
}

void MoDiffChangeTidying::add(std::size_t master, std::size_t actual, bool ofMaster, bool ofActual) {
    bool const isNew = m_runs.empty() || m_runs.back().master.end != master || m_runs.back().actual.end != actual;
    m_isCut = m_isCut || (isNew && m_runs.size() == m_most);
    if (isNew && !m_isCut)
        m_runs.push_back({{master, master}, {actual, actual}});
    m_runs.back().master.end = master + ofMaster;
    m_runs.back().actual.end = actual + ofActual;
}

void MoDiffChangeTidying::tidy(MoDiffSplitter const& splitter) {
    for (std::size_t index = 0; index < m_runs.size(); ++index)
        slide(index);
    join(splitter);
}

/// How far a run may move back and ahead without meeting another one or an end.
MoDiffChangeTidying::Room MoDiffChangeTidying::roomOf(std::size_t index) const {
    Run const& run = m_runs[index];
    std::size_t const back =
        index == 0 ? std::min(run.master.begin, run.actual.begin) : run.master.begin - m_runs[index - 1].master.end;
    std::size_t const ahead = index + 1 == m_runs.size()
                                  ? std::min(m_master.size() - run.master.end, m_actual.size() - run.actual.end)
                                  : m_runs[index + 1].master.begin - run.master.end;
    return {std::min(back, kFurthestSlide), std::min(ahead, kFurthestSlide)};
}

/// A run that is empty on one side may stand earlier or later where the units around it repeat.
void MoDiffChangeTidying::slide(std::size_t index) {
    Run& run = m_runs[index];
    if (!run.master.isEmpty() && !run.actual.isEmpty())
        return;
    MoDiffUnits const& units = run.actual.isEmpty() ? m_master : m_actual;
    MoDiffRange const range = run.actual.isEmpty() ? run.master : run.actual;
    Room const room = roomOf(index);
    auto const isSame = [&units](std::size_t first, std::size_t second) {
        return units.bytes(first, first + 1) == units.bytes(second, second + 1);
    };
    auto const score = [&units](MoDiffRange const& place) {
        return pieceScore(units.text(), {units.begin(place.begin), units.begin(place.end)});
    };
    MoDiffRange at = range;
    while (range.begin - at.begin < room.back && isSame(at.begin - 1, at.end - 1))
        at = {at.begin - 1, at.end - 1};
    MoDiffRange best = range;
    for (int bestScore = score(range);; at = {at.begin + 1, at.end + 1}) {
        if (int const other = score(at); other > bestScore) {
            best = at;
            bestScore = other;
        }
        if (at.begin == range.begin + room.ahead || !isSame(at.begin, at.end))
            break;
    }
    // Unsigned arithmetic carries a way back as well as a way ahead.
    std::size_t const way = best.begin - range.begin;
    run = {{run.master.begin + way, run.master.end + way}, {run.actual.begin + way, run.actual.end + way}};
}

void MoDiffChangeTidying::join(MoDiffSplitter const& splitter) {
    std::size_t kept = 0;
    for (std::size_t index = 1; index < m_runs.size(); ++index) {
        Run& last = m_runs[kept];
        Run const& next = m_runs[index];
        bool const touches = last.master.end == next.master.begin;
        if (touches || (next.master.begin - last.master.end == 1 &&
                        splitter.joins(m_master.bytes(last.master.end, next.master.begin)))) {
            last.master.end = next.master.end;
            last.actual.end = next.actual.end;
        } else {
            m_runs[++kept] = next;
        }
    }
    m_runs.resize(std::min(m_runs.size(), kept + 1));
}

std::vector<MoDiffChange> MoDiffChangeTidying::changes(MoDiffGrain grain) const {
    std::vector<MoDiffChange> changes;
    changes.reserve(m_runs.size());
    for (Run const& run : m_runs)
        changes.push_back({{{m_master.begin(run.master.begin), m_master.begin(run.master.end)},
                            {m_actual.begin(run.actual.begin), m_actual.begin(run.actual.end)}},
                           grain});
    if (m_isCut)
        changes.back().grain = MoDiffGrain::eWhole;
    return changes;
}
