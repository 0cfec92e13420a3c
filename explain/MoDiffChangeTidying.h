#ifndef MO_DIFF_CHANGE_TIDYING_H
#define MO_DIFF_CHANGE_TIDYING_H

#include "MoDiffChange.h"
#include "MoDiffSequenceDiff.h"
#include "MoDiffSplitter.h"
#include "MoDiffUnits.h"

#include <vector>

/// Turns what a sequence diff found into changes of texts and makes them readable: what could stand at several places
/// is moved to where it begins and ends as a reader expects, and changes with next to nothing between them become
/// one.
class MoDiffChangeTidying {
public:
    /// Takes units whose hashes are equal although their bytes are not for changed. The units must outlive it.
    /// @param most how many changes may be made of it, at least one; all that follow become part of the last one
    MoDiffChangeTidying(MoDiffUnits const& master, MoDiffUnits const& actual, MoDiffSequenceDiff const& diff,
                        std::size_t most);

    /// Whether there would be more changes than allowed.
    bool isCut() const { return m_isCut; }
    void tidy(MoDiffSplitter const& splitter);
    std::vector<MoDiffChange> changes(MoDiffGrain grain) const;

private:
    /// Units [begin, end) of both sides.
    struct Run {
        MoDiffRange master, actual;
    };

    struct Room {
        std::size_t back, ahead; ///< in units
    };

    void add(std::size_t master, std::size_t actual, bool ofMaster, bool ofActual);
    Room roomOf(std::size_t index) const;
    void slide(std::size_t index);
    void join(MoDiffSplitter const& splitter);

    MoDiffUnits const& m_master;
    MoDiffUnits const& m_actual;
    std::size_t m_most;
    bool m_isCut = false;
    std::vector<Run> m_runs;
};

#endif
