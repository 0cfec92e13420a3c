#include "MoDiffAudit.h"

#include "MoDiffContentHash.h"
#include "MoDiffEnginePatterns.h"
#include "MoDiffFileContent.h"

#include <algorithm>
#include <set>
#include <stdexcept>

namespace {

std::size_t const kAround = 240; // bytes on both sides of a place, more than an excerpt shows

bool hasPassed(MoDiffPairResult const& pair) {
    return pair.outcome == MoDiffOutcome::ePassed || pair.outcome == MoDiffOutcome::eUnexpectedlyPassed;
}

std::string folderOf(MoDiffPairResult const& pair) {
    std::string const path = pair.id.substr(pair.id.find(':') + 1);
    std::size_t const masters = ("/" + path).rfind("/Masters/");
    return masters == std::string::npos ? path.substr(0, path.rfind('/'))
           : masters == 0               ? "."
                                        : path.substr(0, masters - 1);
}

/// The bytes that were compared. Raises std::exception that tells why they are not at hand.
std::string recordedContent(std::string const& name, std::string const& hash) {
    std::string content = MoDiffFileContent::read(name);
    if (MoDiffContentHash::digitsOf(content.data(), content.size()) != hash)
        throw std::runtime_error(name + " changed since the run");
    return content;
}

MoDiffShownText::Surroundings around(std::string_view file, std::size_t index) {
    std::size_t const begin = index - std::min(index, kAround);
    return {file.substr(begin, index - begin), file.substr(index, kAround)};
}

std::size_t longerSide(MoDiffBlindSpots::Difference const& difference) {
    return std::max(difference.gap.master.size(), difference.gap.actual.size());
}

std::string joined(std::vector<std::string> const& words) {
    std::string list;
    for (std::string const& word : words)
        list.append(list.empty() ? "" : ", ").append(word);
    return list;
}

} // namespace

MoDiffAudit::MoDiffAudit(std::vector<MoDiffPairResult const*> const& pairs, MoDiffPairSetups& setups,
                         std::size_t mostPlaces)
    : m_mostPlaces(mostPlaces) {
    for (MoDiffPairResult const* const pair : pairs) {
        addAmounts(*pair);
        if (!pair->hidden || pair->hidden->master + pair->hidden->actual == 0)
            continue;
        try {
            look(*pair, setups);
        } catch (std::exception const& error) {
            m_omissions.push_back({pair->id, error.what()});
        }
    }
    std::stable_sort(m_differences.begin(), m_differences.end(),
                     [](Difference const& left, Difference const& right) { return left.bytes > right.bytes; });
    std::stable_sort(m_rests.begin(), m_rests.end(),
                     [](Rest const& left, Rest const& right) { return left.bytes > right.bytes; });
}

void MoDiffAudit::addAmounts(MoDiffPairResult const& pair) {
    std::uint64_t const bytes = pair.bytes ? pair.bytes->master + pair.bytes->actual : 0;
    std::uint64_t const hidden = pair.hidden ? pair.hidden->master + pair.hidden->actual : 0;
    auto const add = [bytes](Amount& amount, std::uint64_t hiddenBytes) {
        ++amount.pairs;
        amount.bytes += bytes;
        amount.hidden += hiddenBytes;
    };
    add(m_formats[pair.format], hidden);
    add(m_folders[folderOf(pair)], hidden);
    for (MoDiffPatternCount const& pattern : pair.patterns)
        add(m_patterns[pattern.name], pattern.bytes.master + pattern.bytes.actual);
}

void MoDiffAudit::look(MoDiffPairResult const& pair, MoDiffPairSetups& setups) {
    MoDiffEngineSetup const* const setup = setups.find(pair);
    if (!setup)
        throw std::runtime_error("no format of the configuration has the pair");
    MoDiffLib::Patterns const patterns = MoDiffEnginePatterns::of(*setup->format, setup->settings);
    std::string master = recordedContent(pair.master, pair.hash.master);
    std::string actual = recordedContent(pair.actual, pair.hash.actual);
    bool const isSame = pair.hash.master == pair.hash.actual;
    MoDiffBothSides<MoDiffSourceText> const sources = {MoDiffSourceText(std::move(master), patterns),
                                                       isSame ? MoDiffSourceText(std::string())
                                                              : MoDiffSourceText(std::move(actual), patterns)};
    addRests(pair, pair.master, sources.master);
    if (isSame)
        return;
    addRests(pair, pair.actual, sources.actual);
    if (!hasPassed(pair))
        return;
    if (sources.master.text() != sources.actual.text())
        throw std::runtime_error("it passed, and by the configuration of now it would not");
    addDifference(pair, sources);
}

void MoDiffAudit::addDifference(MoDiffPairResult const& pair, MoDiffBothSides<MoDiffSourceText> const& sources) {
    std::vector<MoDiffBlindSpots::Difference> gaps = MoDiffBlindSpots::findDifferences(sources);
    std::size_t const all = gaps.size();
    if (all == 0)
        return;
    Difference difference = {pair.id, {pair.master, pair.actual}, 0, 0, 0, {}};
    std::set<std::string> patterns;
    for (MoDiffBlindSpots::Difference const& gap : gaps) {
        difference.bytes += longerSide(gap);
        patterns.insert(gap.patterns.begin(), gap.patterns.end());
    }
    for (std::string const& pattern : patterns)
        ++m_patterns[pattern].differing;
    ++m_formats[pair.format].differing;
    ++m_folders[folderOf(pair)].differing;
    gaps.erase(std::remove_if(gaps.begin(), gaps.end(), [](auto const& gap) { return gap.isOfReturns; }), gaps.end());
    difference.returns = all - gaps.size();
    difference.gaps = gaps.size();
    difference.places = placesOf(std::move(gaps), sources);
    m_differences.push_back(std::move(difference));
}

std::vector<MoDiffAudit::Place> MoDiffAudit::placesOf(std::vector<MoDiffBlindSpots::Difference> gaps,
                                                      MoDiffBothSides<MoDiffSourceText> const& sources) const {
    using Gap = MoDiffBlindSpots::Difference;
    std::stable_sort(gaps.begin(), gaps.end(),
                     [](Gap const& left, Gap const& right) { return longerSide(left) > longerSide(right); });
    gaps.resize(std::min(gaps.size(), m_mostPlaces));
    std::sort(gaps.begin(), gaps.end(),
              [](Gap const& left, Gap const& right) { return left.firstByte.master < right.firstByte.master; });
    MoDiffBothSides<MoDiffPlaceCounter> counters = {MoDiffPlaceCounter(sources.master.file()),
                                                    MoDiffPlaceCounter(sources.actual.file())};
    std::vector<Place> places;
    places.reserve(gaps.size());
    for (Gap const& gap : gaps)
        places.push_back({{counters.master.at(gap.firstByte.master), counters.actual.at(gap.firstByte.actual)},
                          {gap.gap.master.size(), gap.gap.actual.size()},
                          MoDiffShownText::excerpts(around(sources.master.file(), gap.firstByte.master),
                                                    around(sources.actual.file(), gap.firstByte.actual)),
                          joined(gap.patterns)});
    return places;
}

void MoDiffAudit::addRests(MoDiffPairResult const& pair, std::string const& file, MoDiffSourceText const& source) {
    MoDiffPlaceCounter counter(source.file());
    for (MoDiffBlindSpots::Rest const& rest : MoDiffBlindSpots::findRests(source))
        m_rests.push_back({pair.id, file, counter.at(rest.gap.begin), rest.gap.size(), source.file().size(),
                           rest.gap.end == source.file().size(), rest.pattern});
}
