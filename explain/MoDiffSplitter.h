#ifndef MO_DIFF_SPLITTER_H
#define MO_DIFF_SPLITTER_H

#include "MoDiffChange.h"

#include <cstddef>
#include <string_view>

/// Takes a text apart into the units that a diff compares. Has no state: where a unit ends depends on the text near
/// it alone, so that both texts are taken apart alike again soon behind a difference.
class MoDiffSplitter {
public:
    virtual ~MoDiffSplitter() = default;

    /// Where the unit ends that begins at an index below the text's length.
    std::size_t unitEnd(std::string_view text, std::size_t from, MoDiffGrain grain) const;

    /// Whether what stands between two changes is so little that they read better as one.
    virtual bool joins(std::string_view between) const = 0;

protected:
    virtual std::size_t wordEnd(std::string_view text, std::size_t from) const = 0;
    virtual std::size_t tokenEnd(std::string_view text, std::size_t from) const = 0;
    virtual std::size_t lineEnd(std::string_view text, std::size_t from) const = 0;

private:
    std::size_t blockEnd(std::string_view text, std::size_t from) const;
};

#endif
