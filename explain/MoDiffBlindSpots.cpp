#include "MoDiffBlindSpots.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace {

using MoDiffBlindSpots::Difference;
using MoDiffBlindSpots::Rest;
using Stretch = MoDiffSourceText::Stretch;

std::size_t const npos = std::string_view::npos;

char const kBlanks[] = " \t\r\n";

/// Stretches without a byte of the cleansed text between them.
struct Gap {
    MoDiffRange range;
    std::size_t textIndex; ///< of the byte of the cleansed text behind it
};

std::vector<Gap> gapsOf(MoDiffSourceText const& source) {
    std::vector<Gap> gaps;
    std::size_t deleted = 0;
    for (Stretch const& stretch : source.hidden()) {
        if (gaps.empty() || gaps.back().range.end != stretch.begin)
            gaps.push_back({{stretch.begin, stretch.end()}, stretch.begin - deleted});
        gaps.back().range.end = stretch.end();
        deleted += stretch.length;
    }
    return gaps;
}

/// What each pattern deleted of a gap.
std::map<std::string, std::string> deletedBy(MoDiffSourceText const& source, Gap const& gap) {
    std::map<std::string, std::string> deleted;
    auto const& hidden = source.hidden();
    for (auto stretch = hidden.firstBehind(gap.range.begin);
         stretch != hidden.end() && stretch->begin < gap.range.end; ++stretch)
        deleted[source.nameOf(*stretch)] += source.file().substr(stretch->begin, stretch->length);
    return deleted;
}

std::vector<std::string> differingPatterns(std::map<std::string, std::string> const& master,
                                           std::map<std::string, std::string> const& actual) {
    std::vector<std::string> names;
    auto const add = [&names](auto const& some, auto const& others) {
        for (auto const& [name, bytes] : some) {
            auto const other = others.find(name);
            bool const isSame = other != others.end() && other->second == bytes;
            if (!isSame && std::find(names.begin(), names.end(), name) == names.end())
                names.push_back(name);
        }
    };
    add(master, actual);
    add(actual, master);
    if (names.empty()) // the same bytes in another order
        for (auto const& [name, bytes] : master)
            names.push_back(name);
    return names;
}

/// Walks through the gaps of both sides, which stand at the same places of the cleansed text where both have one.
class Pairing {
public:
    explicit Pairing(MoDiffBothSides<MoDiffSourceText> const& sources)
        : m_sources(sources), m_master(gapsOf(sources.master)), m_actual(gapsOf(sources.actual)) {}

    std::vector<Difference> find() {
        auto master = m_master.begin();
        auto actual = m_actual.begin();
        while (master != m_master.end() || actual != m_actual.end()) {
            bool const hasMaster =
                master != m_master.end() && (actual == m_actual.end() || master->textIndex <= actual->textIndex);
            bool const hasActual =
                actual != m_actual.end() && (master == m_master.end() || actual->textIndex <= master->textIndex);
            std::size_t const place = hasMaster ? master->textIndex : actual->textIndex;
            compare(hasMaster ? *master : none(m_sources.master, place),
                    hasActual ? *actual : none(m_sources.actual, place));
            std::advance(master, hasMaster);
            std::advance(actual, hasActual);
        }
        return std::move(m_differences);
    }

private:
    static Gap none(MoDiffSourceText const& source, std::size_t textIndex) {
        std::size_t const place = source.toFile(textIndex);
        return {{place, place}, textIndex};
    }

    void compare(Gap const& master, Gap const& actual) {
        std::string_view const masterBytes = master.range.of(m_sources.master.file());
        std::string_view const actualBytes = actual.range.of(m_sources.actual.file());
        if (masterBytes == actualBytes)
            return;
        MoDiffBothSides<std::size_t> const common = beforeDifference(masterBytes, actualBytes);
        m_differences.push_back(
            {{master.range, actual.range},
             {master.range.begin + common.master, actual.range.begin + common.actual},
             differingPatterns(deletedBy(m_sources.master, master), deletedBy(m_sources.actual, actual)),
             common.master == masterBytes.size() && common.actual == actualBytes.size()});
    }

    /// How many bytes stand before the first difference, carriage returns left out of the comparison.
    static MoDiffBothSides<std::size_t> beforeDifference(std::string_view master, std::string_view actual) {
        MoDiffBothSides<std::size_t> at;
        auto const skipReturns = [&] {
            while (at.master < master.size() && master[at.master] == '\r')
                ++at.master;
            while (at.actual < actual.size() && actual[at.actual] == '\r')
                ++at.actual;
        };
        for (skipReturns();
             at.master < master.size() && at.actual < actual.size() && master[at.master] == actual[at.actual];
             skipReturns()) {
            ++at.master;
            ++at.actual;
        }
        return at;
    }

    MoDiffBothSides<MoDiffSourceText> const& m_sources;
    std::vector<Gap> m_master;
    std::vector<Gap> m_actual;
    std::vector<Difference> m_differences;
};

} // namespace

std::vector<Difference> MoDiffBlindSpots::findDifferences(MoDiffBothSides<MoDiffSourceText> const& sources) {
    return Pairing(sources).find();
}

std::vector<Rest> MoDiffBlindSpots::findRests(MoDiffSourceText const& source) {
    std::vector<Rest> rests;
    std::size_t const length = source.file().size();
    for (Gap const& gap : gapsOf(source)) {
        bool const isAtEnd =
            gap.range.end == length && gap.range.of(source.file()).find_first_not_of(kBlanks) != npos;
        if (!isAtEnd && gap.range.size() <= length / 2)
            continue;
        std::map<std::string, std::string> const deleted = deletedBy(source, gap);
        auto const most = std::max_element(deleted.begin(), deleted.end(), [](auto const& left, auto const& right) {
            return left.second.size() < right.second.size();
        });
        rests.push_back({gap.range, most->first});
    }
    return rests;
}

std::string MoDiffBlindSpots::hiderOf(MoDiffSourceText const& source, std::size_t fileIndex) {
    if (fileIndex >= source.file().size())
        return "NUL";
    auto const stretch = source.hidden().firstBehind(fileIndex);
    return stretch != source.hidden().end() && stretch->begin <= fileIndex ? source.nameOf(*stretch) : "";
}
