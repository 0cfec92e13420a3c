#ifndef MO_DIFF_CLEANSING_MAP_H
#define MO_DIFF_CLEANSING_MAP_H

#include "MoDiffLib.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/// A text after cleansing, with the way back: for each of its bytes the byte of the file that it is, and which step
/// deleted what stands between them.
///
/// The text is cleansed by the machinery that cleanses for comparisons, which is only watched here; so both always
/// agree. Memory is that of the text and 40 bytes at most for each stretch that was deleted. Once made, a map is not
/// changed and may be read from several threads at once.
class KLT_EXPORT MoDiffCleansingMap {
public:
    /// Bytes of the file, one after another, that one step deleted.
    struct Stretch {
        std::size_t begin;  ///< index in the file
        std::size_t length; ///< in bytes, more than 0
        unsigned step;      ///< 0: the carriage returns; i: the i-th pattern of the list, counted from 1
    };

    /// Cleanses a text as MoDiffLib::cleanse() does.
    /// @param text a file's bytes; as in a comparison, the text ends before the first NUL
    /// Raises KLTAssertError when a pattern is null or gives up. The patterns are in use during the call only.
    static MoDiffCleansingMap cleanse(std::string text, MoDiffLib::Patterns const& patterns);

    /// Takes stretches in the order of the file, without overlaps.
    using StretchSink = std::function<void(Stretch const&)>;

    /// The same where the text stands, for whoever keeps the way back in another form: no map is made. Beside the
    /// text it takes some four bytes for each stretch while it works.
    /// @param sink is told what was deleted, once the text is cleansed
    static void cleanse(std::string& text, MoDiffLib::Patterns const& patterns, StretchSink const& sink);

    std::string const& cleansedText() const { return m_text; }

    /// The length of the text before cleansing, in bytes.
    std::size_t fileLength() const { return m_fileLength; }

    /// The index in the file of a byte of the cleansed text; strictly increases with it. For the cleansed text's
    /// length, which is the largest index allowed, the length of the file. Takes logarithmic time.
    std::size_t toFile(std::size_t cleansedIndex) const;

    /// What was deleted, in the order of the file, without overlaps. Neighbours that touch belong to different steps.
    std::vector<Stretch> const& stretches() const { return m_stretches; }

    /// How many bytes each step deleted, by step.
    std::vector<std::size_t> const& deletedBySteps() const { return m_deletedBySteps; }

private:
    MoDiffCleansingMap() = default;

    std::string m_text;
    std::size_t m_fileLength = 0;
    std::vector<Stretch> m_stretches;
    std::vector<std::size_t> m_deletedUpTo; ///< by stretch, the bytes deleted up to its end
    std::vector<std::size_t> m_deletedBySteps;
};

#endif
