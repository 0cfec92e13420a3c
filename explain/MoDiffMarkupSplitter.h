#ifndef MO_DIFF_MARKUP_SPLITTER_H
#define MO_DIFF_MARKUP_SPLITTER_H

#include "MoDiffSplitter.h"

/// Takes texts apart as people read them: tags, words, numbers, runs of blanks, line ends, punctuation.
class MoDiffMarkupSplitter : public MoDiffSplitter {
public:
    bool joins(std::string_view between) const override;

    /// Where the number ends that begins at an index: an optional sign that does not follow a word, digits in groups
    /// parted by single points, commas or apostrophes, an optional exponent. The same index when none begins there.
    static std::size_t numberEnd(std::string_view text, std::size_t from);

protected:
    std::size_t wordEnd(std::string_view text, std::size_t from) const override;
    std::size_t tokenEnd(std::string_view text, std::size_t from) const override;
    /// Behind a line end, between a tag's end and the next tag, or behind a blank that the bytes before it choose.
    std::size_t lineEnd(std::string_view text, std::size_t from) const override;
};

#endif
