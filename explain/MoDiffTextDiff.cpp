#include "MoDiffTextDiff.h"

#include "MoDiffChangeTidying.h"
#include "MoDiffSequenceDiff.h"
#include "MoDiffUnits.h"

#include <algorithm>
#include <optional>

namespace {

using Grain = MoDiffGrain;
using Changes = std::vector<MoDiffChange>;

std::size_t const kLeastMemory = std::size_t{4} << 20;
std::uint64_t const kWorkPerUnit = 16;      // what every comparison may take, however little work is left
std::size_t const kBytesPerChange = 160;    // with its places
std::size_t const kLongestInside = 1 << 16; // bytes of a change that is compared by words

Grain coarser(Grain grain) {
    return static_cast<Grain>(static_cast<int>(grain) + 1);
}

/// One comparison of two texts.
class Comparison {
public:
    Comparison(std::string_view master, std::string_view actual, MoDiffSplitter const& splitter,
               MoDiffTextDiff::Limits const& limits)
        : m_texts{master, actual}, m_splitter(splitter), m_work(limits.work),
          m_memory(limits.memory != 0 ? limits.memory
                                      : std::max(kLeastMemory, (master.size() + actual.size()) / 12)) {}

    Changes run() {
        MoDiffChange whole = {{{0, m_texts.master.size()}, {0, m_texts.actual.size()}}, Grain::eWhole};
        compare(whole, Grain::eBlocks);
        return std::move(m_changes);
    }

private:
    /// Appends the changes within a part, as fine as the limits permit.
    void compare(MoDiffChange part, Grain coarsest) {
        MoDiffUnits::trimEnds(m_texts, m_splitter, part.ranges);
        if (part.ranges.master.isEmpty() && part.ranges.actual.isEmpty())
            return;
        if (part.ranges.master.isEmpty() || part.ranges.actual.isEmpty())
            return append({part.ranges, Grain::eTokens});
        for (Grain grain = Grain::eTokens; grain <= coarsest; grain = coarser(grain))
            if (std::optional<Changes> const changes = changesBy(grain, part))
                return refine(*changes, grain);
        append(part);
    }

    void refine(Changes const& changes, Grain grain) {
        for (MoDiffChange const& change : changes) {
            if (grain == Grain::eTokens)
                insideOf(change);
            else
                compare(change, static_cast<Grain>(static_cast<int>(grain) - 1));
        }
    }

    /// By words where a tag or a field has changed, unless little of it stays.
    void insideOf(MoDiffChange const& change) {
        MoDiffBothSides<MoDiffRange> const& ranges = change.ranges;
        std::size_t const longest = std::max(ranges.master.size(), ranges.actual.size());
        bool const isComparable = !ranges.master.isEmpty() && !ranges.actual.isEmpty() && longest <= kLongestInside;
        std::optional<Changes> const inner = isComparable ? changesBy(Grain::eWords, change) : std::nullopt;
        std::size_t changed = 0;
        if (inner)
            for (MoDiffChange const& part : *inner)
                changed += std::max(part.ranges.master.size(), part.ranges.actual.size());
        if (!inner || changed * 2 > longest)
            return append(change);
        for (MoDiffChange const& part : *inner)
            append(part);
    }

    void append(MoDiffChange const& change) { m_changes.push_back(change); }

    /// None when a limit is met.
    std::optional<Changes> changesBy(Grain grain, MoDiffChange const& part) {
        std::size_t const count = MoDiffUnits::count(m_texts.master, m_splitter, grain, part.ranges.master) +
                                  MoDiffUnits::count(m_texts.actual, m_splitter, grain, part.ranges.actual);
        std::size_t const most = m_memory / kBytesPerChange;
        if (m_changes.size() > most || count > m_memory / MoDiffUnits::kBytesPerUnit)
            return std::nullopt;
        MoDiffUnits const master(m_texts.master, m_splitter, grain, part.ranges.master);
        MoDiffUnits const actual(m_texts.actual, m_splitter, grain, part.ranges.actual);
        MoDiffSequenceDiff diff(master.hashes(), actual.hashes());
        std::uint64_t const allowed = std::max(m_work / 2, count * kWorkPerUnit);
        std::uint64_t left = allowed;
        // Tokens that happen to be equal in texts with nothing in common are no help; lines are.
        bool const isDone =
            diff.run(left, grain <= Grain::eTokens ? MoDiffSequenceDiff::eGiveUp : MoDiffSequenceDiff::eFinish);
        m_work -= std::min(m_work, allowed - left);
        if (!isDone)
            return std::nullopt;
        MoDiffChangeTidying tidying(master, actual, diff, std::max<std::size_t>(most, 1));
        if (grain <= Grain::eTokens) {
            if (tidying.isCut())
                return std::nullopt;
            tidying.tidy(m_splitter);
        }
        return tidying.changes(grain);
    }

    MoDiffBothSides<std::string_view> m_texts;
    MoDiffSplitter const& m_splitter;
    std::uint64_t m_work;
    std::size_t m_memory;
    Changes m_changes;
};

} // namespace

std::vector<MoDiffChange> MoDiffTextDiff::find(std::string_view master, std::string_view actual,
                                               MoDiffSplitter const& splitter, Limits limits) {
    return Comparison(master, actual, splitter, limits).run();
}
